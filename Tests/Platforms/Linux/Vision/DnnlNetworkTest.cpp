// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/DnnlNetwork.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Node = OnnxGraph::Node;

/// One operator between "in" and "out", the further inputs being constants.
OnnxGraph graph(std::string type, const std::map<std::string, OnnxGraph::Constant>& constants = {},
                const std::map<std::string, std::vector<std::int64_t>>& integers = {}) {
    OnnxGraph graph;
    Node node{.type = std::move(type),
              .inputs = {"in"},
              .outputs = {"out"},
              .integers = {integers.begin(), integers.end()},
              .numbers = {},
              .texts = {}};
    for (const auto& [name, constant] : constants) {
        node.inputs.push_back(name);
        graph.constants[name] = constant;
    }
    graph.nodes.push_back(std::move(node));
    return graph;
}

OnnxGraph::Constant floats(std::vector<std::int64_t> shape, std::vector<float> values) {
    return {.shape = std::move(shape), .values = std::move(values), .integers = {}};
}
OnnxGraph::Constant whole(const std::vector<std::int64_t>& values) {
    return {.shape = {static_cast<std::int64_t>(values.size())}, .values = {}, .integers = values};
}

/// Of an image of 2 x 2 pixels, 1 to 12.
std::optional<std::vector<float>> run(OnnxGraph graph) {
    std::vector<float> planes;
    for (int i = 1; i <= 12; ++i)
        planes.push_back(static_cast<float>(i));
    auto network = DnnlNetwork::create(std::move(graph), {"out"});
    if (!network) return std::nullopt;
    const DnnlNetwork::Image image{.name = "in", .width = 2, .height = 2, .planes = planes};
    std::vector<NeuralOutput> outputs{{"out", {}}};
    if (!network->run({&image, 1}, outputs)) return std::nullopt;
    return outputs[0].values;
}

TEST(DnnlNetwork, operatorsOnASmallImage) {
    using Floats = std::vector<float>;
    const struct {
        const char* name;
        OnnxGraph graph;
        Floats expected;
    } cases[] = {
        {"a factor for each channel",
         graph("Mul", {{"b", floats({1, 3, 1, 1}, {1, 0, -1})}}),
         {1, 2, 3, 4, 0, 0, 0, 0, -9, -10, -11, -12}},
        {"one addend",
         graph("Add", {{"b", floats({1}, {1})}}),
         {2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13}},
        {"the largest",
         graph("MaxPool", {}, {{"kernel_shape", {2, 2}}, {"strides", {2, 2}}}),
         {4, 8, 12}},
        {"the mean", graph("GlobalAveragePool"), {2.5, 6.5, 10.5}},
        {"channels last",
         graph("Transpose", {}, {{"perm", {0, 2, 3, 1}}}),
         {1, 5, 9, 2, 6, 10, 3, 7, 11, 4, 8, 12}},
        {"in the file's order", graph("Flatten"), {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
        {"one channel of ones, with an edge",
         graph("Conv", {{"w", floats({1, 3, 1, 1}, {1, 1, 1})}}, {{"pads", {1, 0, 0, 0}}}),
         {0, 0, 15, 18, 21, 24}},
        {"each channel by itself",
         graph("Conv", {{"w", floats({3, 1, 1, 1}, {1, 2, 3})}}, {{"group", {3}}}),
         {1, 2, 3, 4, 10, 12, 14, 16, 27, 30, 33, 36}},
    };
    for (const auto& [name, graph, expected] : cases) {
        const auto values = run(graph);
        ASSERT_TRUE(values) << name;
        EXPECT_EQ(*values, expected) << name;
    }
}

TEST(DnnlNetwork, aConvolutionTakesInWhatFollows) {
    OnnxGraph network = graph("Conv", {{"w", floats({1, 3, 1, 1}, {1, 0, 0})}});
    network.nodes[0].outputs = {"raw"};
    const auto follow = [&](const char* type, std::vector<std::string> inputs, const char* output) {
        network.nodes.push_back({.type = type,
                                 .inputs = std::move(inputs),
                                 .outputs = {output},
                                 .integers = {},
                                 .numbers = {{"epsilon", 0.0F}, {"min", 0.0F}, {"max", 6.0F}},
                                 .texts = {}});
    };
    network.constants["factor"] = floats({1}, {8});
    network.constants["shift"] = floats({1}, {-2});
    network.constants["mean"] = floats({1}, {2});
    network.constants["variance"] = floats({1}, {4});
    follow("BatchNormalization", {"raw", "factor", "shift", "mean", "variance"}, "normal");
    follow("Clip", {"normal"}, "out");
    EXPECT_EQ(run(network), (std::vector<float>{0, 0, 2, 6}));
    // What others use as well stays as it is.
    follow("Add", {"out", "normal"}, "sum");
    network.nodes.back().outputs = {"out"};
    network.nodes[2].outputs = {"clipped"};
    network.nodes[3].inputs[0] = "clipped";
    EXPECT_EQ(run(network), (std::vector<float>{-6, -2, 4, 12}));
}

TEST(DnnlNetwork, leavesToOthersWhatItDoesNotKnow) {
    OnnxGraph linear = graph("Resize", {{"s", floats({4}, {1, 1, 2, 2})}});
    linear.nodes[0].texts["mode"] = "linear";
    OnnxGraph scaled = graph("Gemm", {{"b", floats({12, 1}, {})}, {"c", floats({1}, {1})}});
    scaled.nodes[0].numbers["alpha"] = 2;
    const std::pair<const char* const, OnnxGraph> cases[] = {
        {"a foreign operator", graph("Einsum")},
        {"limits as inputs", graph("Clip", {{"a", floats({}, {0})}, {"b", floats({}, {6})}})},
        {"an edge of zeros", graph("Pad", {}, {{"pads", {0, 0, 1, 1, 0, 0, 1, 1}}})},
        {"a pool beyond the edge",
         graph("MaxPool", {}, {{"kernel_shape", {2, 2}}, {"pads", {1, 1, 0, 0}}})},
        {"weights that are computed", graph("Conv")},
        {"another way to enlarge", linear},
        {"a scaled product", scaled},
        {"every other row",
         graph("Slice",
               {{"a", whole({0})}, {"b", whole({2})}, {"c", whole({2})}, {"d", whole({2})}})},
    };
    for (const auto& [name, graph] : cases)
        EXPECT_FALSE(DnnlNetwork::create(graph, {"out"})) << name;
}

TEST(DnnlNetwork, sizesThatDoNotFitAreRefusedNotRun) {
    const std::pair<const char* const, OnnxGraph> cases[] = {
        {"channels", graph("Conv", {{"w", floats({1, 4, 1, 1}, {1, 1, 1, 1})}})},
        {"a kernel larger than the picture",
         graph("Conv", {{"w", floats({1, 3, 3, 3}, std::vector<float>(27))}})},
        {"a pool larger than the picture", graph("MaxPool", {}, {{"kernel_shape", {3, 3}}})},
        {"other channels", graph("Add", {{"b", floats({1, 2, 1, 1}, {1, 1})}})},
        {"a shape of another size", graph("Reshape", {{"s", whole({1, 5})}})},
        {"an order that repeats", graph("Transpose", {}, {{"perm", {0, 1, 1, 2}}})},
        {"a row of four dimensions",
         graph("MatMul", {{"b", floats({12, 1}, std::vector<float>(12))}})},
        {"weights that are missing", graph("Add", {{"b", floats({1, 3, 2, 2}, {1})}})},
    };
    for (const auto& [name, graph] : cases) {
        ASSERT_TRUE(DnnlNetwork::create(graph, {"out"})) << name;
        EXPECT_EQ(run(graph), std::nullopt) << name;
    }
}

}  // namespace
}  // namespace marrowby
