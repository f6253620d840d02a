// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FileSystem.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <system_error>
#include <vector>

namespace marrowby {

/// A file system in memory that knows what has reached the device. A failing call does nothing,
/// except that a write writes half. One thread at a time.
class FakeFileSystem final : public FileSystem {
  public:
    using Path = std::filesystem::path;
    using Bytes = std::vector<std::uint8_t>;
    using Result = std::expected<void, FileError>;

    /// With the root folder only.
    FakeFileSystem() { flushedNames_["/"] = names_["/"] = folder(); }

    [[nodiscard]] bool exists(const Path& path) const override { return names_.contains(path); }
    [[nodiscard]] std::expected<Bytes, FileError> read(const Path& path,
                                                       std::size_t limit) override {
        if (fails(path)) return std::unexpected(error());
        const auto found = names_.find(path);
        if (found == names_.end()) return failure(std::errc::no_such_file_or_directory);
        if (found->second->isFolder) return failure(std::errc::is_a_directory);
        if (found->second->bytes.size() > limit) return failure(std::errc::file_too_large);
        return found->second->bytes;
    }
    [[nodiscard]] Result makeFolder(const Path& path) override {
        if (fails(path)) return std::unexpected(error());
        if (isFolder(path)) return {};
        if (names_.contains(path)) return failure(std::errc::file_exists);
        if (!isFolder(path.parent_path())) return failure(std::errc::no_such_file_or_directory);
        names_[path] = folder();
        return {};
    }
    [[nodiscard]] std::expected<File, FileError> createExclusively(const Path& path) override {
        if (fails(path)) return std::unexpected(error());
        if (names_.contains(path)) return failure(std::errc::file_exists);
        if (!isFolder(path.parent_path())) return failure(std::errc::no_such_file_or_directory);
        open_[++lastHandle_] = names_[path] = std::make_shared<Node>();
        return File{lastHandle_};
    }
    [[nodiscard]] Result write(File file, std::span<const std::uint8_t> bytes) override {
        const bool hasFailed = fails({});
        Bytes& content = open_.at(file.handle)->bytes;
        const auto taken = bytes.first(hasFailed ? bytes.size() / 2 : bytes.size());
        content.insert(content.end(), taken.begin(), taken.end());
        if (hasFailed) return std::unexpected(error());
        return {};
    }
    [[nodiscard]] Result flush(File file) override {
        if (fails({})) return std::unexpected(error());
        open_.at(file.handle)->flushed = open_.at(file.handle)->bytes;
        return {};
    }
    void close(File file) override { open_.erase(file.handle); }
    [[nodiscard]] Result setPrivateMode(const Path& path) override {
        if (fails(path)) return std::unexpected(error());
        if (!exists(path)) return failure(std::errc::no_such_file_or_directory);
        return {};
    }
    [[nodiscard]] Result rename(const Path& from, const Path& to) override {
        if (fails(to)) return std::unexpected(error());
        auto moved = names_.extract(from);
        if (!moved) return failure(std::errc::no_such_file_or_directory);
        names_[to] = std::move(moved.mapped());
        return {};
    }
    [[nodiscard]] Result flushFolder(const Path& path) override {
        if (fails(path)) return std::unexpected(error());
        if (!isFolder(path)) return failure(std::errc::no_such_file_or_directory);
        const auto isEntry = [&](const auto& entry) { return entry.first.parent_path() == path; };
        std::erase_if(flushedNames_, isEntry);
        std::ranges::copy_if(names_, std::inserter(flushedNames_, flushedNames_.end()), isEntry);
        return {};
    }
    [[nodiscard]] Result remove(const Path& path) override {
        if (fails(path)) return std::unexpected(error());
        if (names_.erase(path) == 0) return failure(std::errc::no_such_file_or_directory);
        return {};
    }

    /// What every failed call gives.
    static FileError error() { return failure(std::errc::io_error).error(); }

    /// Lets one call fail, the next one being 0; exists() and close() don't count.
    void failCall(std::size_t call) { expectFailures(call, call); }
    /// Lets that one and all later ones fail.
    void failFrom(std::size_t call) {
        expectFailures(call, std::numeric_limits<std::size_t>::max());
    }
    /// Lets everything about this path fail.
    void deny(const Path& path) { denied_.insert(path); }
    void heal() {
        expectFailures(1, 0);
        denied_.clear();
    }
    /// How many calls since the last failCall(), failFrom() or heal().
    [[nodiscard]] std::size_t calls() const { return calls_; }

    /// Power loss: unflushed content is lost, and so are names, unless the device happened to write
    /// them.
    enum class Names { lost, kept };
    void losePower(Names names) {
        open_.clear();
        if (names == Names::lost) names_ = flushedNames_;
        // A folder without a name takes what is in it along; parents come first.
        NameTable reachable;
        for (const auto& entry : names_) {
            const auto parent = entry.first.parent_path();
            if (parent == entry.first || reachable.contains(parent)) reachable.insert(entry);
        }
        names_ = flushedNames_ = reachable;
        for (const auto& [path, node] : names_)
            node->bytes = node->flushed;
    }

    /// On the device at once, with its folders.
    void put(const Path& path, const Bytes& bytes) {
        for (auto parent = path.parent_path(); !exists(parent); parent = parent.parent_path())
            flushedNames_[parent] = names_[parent] = folder();
        flushedNames_[path] = names_[path] =
            std::make_shared<Node>(Node{.isFolder = false, .bytes = bytes, .flushed = bytes});
    }
    [[nodiscard]] std::optional<Bytes> content(const Path& path) const {
        if (!exists(path) || isFolder(path)) return std::nullopt;
        return names_.at(path)->bytes;
    }
    [[nodiscard]] std::vector<Path> files() const {
        std::vector<Path> files;
        for (const auto& [path, node] : names_) {
            if (!node->isFolder) files.push_back(path);
        }
        return files;
    }
    [[nodiscard]] std::size_t openFiles() const { return open_.size(); }

  private:
    struct Node {
        bool isFolder = false;
        Bytes bytes;
        Bytes flushed;
    };
    using NameTable = std::map<Path, std::shared_ptr<Node>>;

    static std::unexpected<FileError> failure(std::errc code) {
        return std::unexpected(FileError{.code = static_cast<int>(code),
                                         .message = std::make_error_code(code).message()});
    }
    static std::shared_ptr<Node> folder() {
        return std::make_shared<Node>(Node{.isFolder = true, .bytes = {}, .flushed = {}});
    }
    [[nodiscard]] bool isFolder(const Path& path) const {
        return exists(path) && names_.at(path)->isFolder;
    }
    [[nodiscard]] bool fails(const Path& path) {
        const std::size_t call = calls_++;
        return denied_.contains(path) || (firstFailing_ <= call && call <= lastFailing_);
    }
    void expectFailures(std::size_t first, std::size_t last) {
        calls_ = 0;
        firstFailing_ = first;
        lastFailing_ = last;
    }

    NameTable names_;
    NameTable flushedNames_;
    std::map<int, std::shared_ptr<Node>> open_;
    std::set<Path> denied_;
    int lastHandle_ = 0;
    std::size_t calls_ = 0;
    // The calls that fail: first to last.
    std::size_t firstFailing_ = 1;
    std::size_t lastFailing_ = 0;
};

}  // namespace marrowby
