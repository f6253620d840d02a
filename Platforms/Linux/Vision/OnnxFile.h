// SPDX-License-Identifier: Apache-2.0
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

/// Path of a model file and, if it is pinned, its SHA-256.
struct OnnxSource {
    /// Implicit, so that a path can be passed.
    template <std::convertible_to<std::filesystem::path> Path>
    // NOLINTNEXTLINE(google-explicit-constructor)
    OnnxSource(const Path& at, std::string sum = {}) : path(at), sha256(std::move(sum)) {}

    std::filesystem::path path;
    std::string sha256;
};

/// An ONNX model file (https://onnx.ai) and its description.
struct OnnxFile {
    static constexpr std::uintmax_t largestFile = std::uintmax_t{512} << 20U;

    struct Value {
        std::string name;
        bool isFloatTensor = false;
        /// A dynamic dimension is 0.
        std::vector<std::int64_t> shape;
    };

    /// Initializers (weights) excluded.
    std::vector<Value> inputs;
    std::vector<Value> outputs;
    std::map<std::string, std::string> metadata;
    std::string bytes;

    [[nodiscard]] std::string sha256() const;

    /// The error is a sentence with the file's name, without its folder.
    [[nodiscard]] static std::expected<OnnxFile, std::string> read(const OnnxSource& from);
};

}  // namespace marrowby
