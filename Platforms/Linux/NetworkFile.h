#pragma once

#include <concepts>
#include <filesystem>
#include <string>
#include <utility>

namespace marrowby {

/// Where a network lies and, where only that one will do, the SHA-256 that its file must have.
struct NetworkFile {
    /// Anything that is a path says as much.
    template <std::convertible_to<std::filesystem::path> Path>
    // NOLINTNEXTLINE(google-explicit-constructor)
    NetworkFile(const Path& at, std::string sum = {}) : path(at), sha256(std::move(sum)) {}

    std::filesystem::path path;
    std::string sha256;
};

}  // namespace marrowby
