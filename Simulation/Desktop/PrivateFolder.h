// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

/// A new folder of mode 0700, removed with its content when this is destroyed.
class PrivateFolder {
  public:
    /// The error is a sentence.
    [[nodiscard]] static std::expected<PrivateFolder, std::string> create();

    PrivateFolder(PrivateFolder&& other) noexcept : path_(std::exchange(other.path_, {})) {}
    PrivateFolder& operator=(PrivateFolder&& other) noexcept {
        std::swap(path_, other.path_);
        return *this;
    }
    PrivateFolder(const PrivateFolder&) = delete;
    PrivateFolder& operator=(const PrivateFolder&) = delete;
    ~PrivateFolder();

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }

  private:
    explicit PrivateFolder(std::filesystem::path path) : path_(std::move(path)) {}

    std::filesystem::path path_;
};

/// NAME=value: the folder as a user’s home, and as all that freedesktop.org’s base directories
/// name.
[[nodiscard]] std::vector<std::string> homeVariables(const std::filesystem::path& folder);

}  // namespace marrowby
