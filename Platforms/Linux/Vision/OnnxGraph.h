// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The computation in an ONNX file: operators in the order of their execution, and weights.
struct OnnxGraph {
    struct Constant {
        std::vector<std::int64_t> shape;
        /// Of floats; empty where it holds integers.
        std::vector<float> values;
        std::vector<std::int64_t> integers;
    };
    struct Node {
        std::string type;
        /// Empty for an input that is left out.
        std::vector<std::string> inputs;
        std::vector<std::string> outputs;
        std::map<std::string, std::vector<std::int64_t>, std::less<>> integers;
        std::map<std::string, float, std::less<>> numbers;
        std::map<std::string, std::string, std::less<>> texts;

        [[nodiscard]] std::int64_t integer(std::string_view name, std::int64_t otherwise) const;
        /// That many times `otherwise` where it is left out.
        [[nodiscard]] std::vector<std::int64_t> list(std::string_view name, std::size_t length,
                                                     std::int64_t otherwise) const;
        [[nodiscard]] float number(std::string_view name, float otherwise) const;
    };

    /// Without those of Constant operators, which are among the constants.
    std::vector<Node> nodes;
    std::map<std::string, Constant, std::less<>> constants;

    /// Nothing where a constant is of another type than float or 64-bit integer.
    [[nodiscard]] static std::optional<OnnxGraph> parse(const std::string& bytes);
};

}  // namespace marrowby
