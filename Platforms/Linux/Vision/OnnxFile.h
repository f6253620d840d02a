#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

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

/// A network's file in the ONNX format (https://onnx.ai) and what it says about itself.
struct OnnxFile {
    static constexpr std::uintmax_t largestFile = std::uintmax_t{512} << 20U;

    struct Value {
        std::string name;
        bool isFloatTensor = false;
        /// A size that is not fixed is 0.
        std::vector<std::int64_t> shape;
    };

    /// Without the network's own weights.
    std::vector<Value> inputs;
    std::vector<Value> outputs;
    std::map<std::string, std::string> metadata;
    /// The whole file.
    std::string bytes;

    /// Of `bytes`.
    [[nodiscard]] std::string sha256() const;

    /// The error is one sentence that names the file without its folder.
    [[nodiscard]] static std::expected<OnnxFile, std::string> read(const NetworkFile& from);
};

}  // namespace marrowby
