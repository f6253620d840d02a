// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace marrowby {

/// A model file's checksum and declarations.
struct ModelFileFacts {
    struct Value {
        std::string name;
        /// A size that is not fixed is 0.
        std::vector<std::int64_t> shape;
        friend bool operator==(const Value&, const Value&) = default;
    };

    /// Of the whole file, 64 lower-case digits.
    std::string sha256;
    std::vector<Value> inputs;
    std::vector<Value> outputs;
    std::map<std::string, std::string> metadata;
};

/// Reads model files. Any thread.
class ModelFiles {
  public:
    virtual ~ModelFiles() = default;
    /// The error is a sentence that names the file.
    [[nodiscard]] virtual std::expected<ModelFileFacts, std::string> facts(
        const std::filesystem::path& file) const = 0;
};

}  // namespace marrowby
