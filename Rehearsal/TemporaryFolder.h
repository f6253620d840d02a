#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <utility>

namespace marrowby {

/// A new folder of mode 0700 that goes, with all in it, when this is destroyed.
class TemporaryFolder {
  public:
    /// The error is a sentence.
    [[nodiscard]] static std::expected<TemporaryFolder, std::string> create();

    TemporaryFolder(TemporaryFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}
    TemporaryFolder& operator=(TemporaryFolder&& other) noexcept {
        std::swap(path_, other.path_);
        return *this;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    explicit TemporaryFolder(std::filesystem::path path) : path_(std::move(path)) {}

    std::filesystem::path path_;
};

}  // namespace marrowby
