#pragma once

#include "Platforms/Linux/NetworkFile.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <map>
#include <string>
#include <vector>

namespace marrowby {

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
