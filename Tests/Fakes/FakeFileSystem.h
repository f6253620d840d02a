#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/FileSystem.h"

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace marrowby {

/// A file system in memory that knows what has reached the device. A call that fails does nothing,
/// but for a write, which gets half way. Any thread.
class FakeFileSystem final : public FileSystem {
  public:
    using Bytes = std::vector<std::uint8_t>;

    /// With the root folder only.
    FakeFileSystem();

    [[nodiscard]] bool exists(const std::filesystem::path& path) const override;
    [[nodiscard]] std::expected<Bytes, FileError> read(const std::filesystem::path& path,
                                                       std::size_t limit) override;
    [[nodiscard]] std::expected<void, FileError> makeFolder(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<File, FileError> createExclusively(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> write(
        File file, std::span<const std::uint8_t> bytes) override;
    [[nodiscard]] std::expected<void, FileError> flush(File file) override;
    void close(File file) override;
    [[nodiscard]] std::expected<void, FileError> setPrivateMode(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> rename(const std::filesystem::path& from,
                                                        const std::filesystem::path& to) override;
    [[nodiscard]] std::expected<void, FileError> flushFolder(
        const std::filesystem::path& path) override;
    [[nodiscard]] std::expected<void, FileError> remove(const std::filesystem::path& path) override;

    /// What every failed call gives.
    static FileError error();

    /// Lets one call fail, the next one being 0; exists() and close() don't count.
    void failCall(std::size_t call);
    /// Lets that one and all later ones fail.
    void failFrom(std::size_t call);
    /// Lets everything about this path fail.
    void deny(const std::filesystem::path& path);
    void heal();
    /// How many calls since the last failCall(), failFrom() or heal().
    [[nodiscard]] std::size_t calls() const;

    /// The power goes: content that wasn't flushed is lost; so are names, unless the device wrote
    /// them by chance.
    enum class Names { lost, kept };
    void losePower(Names names);

    /// On the device at once, with its folders.
    void put(const std::filesystem::path& path, const Bytes& bytes);
    [[nodiscard]] std::optional<Bytes> content(const std::filesystem::path& path) const;
    [[nodiscard]] std::vector<std::filesystem::path> files() const;
    [[nodiscard]] std::size_t openFiles() const;

  private:
    struct Node {
        bool isFolder = false;
        Bytes bytes;
        Bytes flushed;
    };
    using NameTable = std::map<std::filesystem::path, std::shared_ptr<Node>>;

    [[nodiscard]] bool fails(const std::filesystem::path& path) REQUIRES(mutex_);
    [[nodiscard]] bool isFolder(const std::filesystem::path& path) const REQUIRES(mutex_);
    void expect(std::size_t first, std::size_t last);

    mutable Mutex mutex_;
    NameTable names_ GUARDED_BY(mutex_);
    NameTable flushedNames_ GUARDED_BY(mutex_);
    std::map<int, std::shared_ptr<Node>> open_ GUARDED_BY(mutex_);
    std::set<std::filesystem::path> denied_ GUARDED_BY(mutex_);
    int lastHandle_ GUARDED_BY(mutex_) = 0;
    std::size_t calls_ GUARDED_BY(mutex_) = 0;
    // The calls that fail: first to last.
    std::size_t firstFailing_ GUARDED_BY(mutex_) = 1;
    std::size_t lastFailing_ GUARDED_BY(mutex_) = 0;
};

}  // namespace marrowby
