// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxGraph.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include <onnx/onnx_pb.h>

namespace marrowby {

namespace {

template <typename Number, typename Listed>
std::optional<std::vector<Number>> numbers(const std::string& raw, const Listed& listed,
                                           std::size_t count) {
    std::vector<Number> values(listed.begin(), listed.end());
    if (values.empty() && !raw.empty()) {
        if (raw.size() != count * sizeof(Number)) return std::nullopt;
        values.resize(count);
        std::memcpy(values.data(), raw.data(), raw.size());
    }
    if (values.size() != count) return std::nullopt;
    return values;
}

std::optional<OnnxGraph::Constant> constant(const onnx::TensorProto& tensor) {
    OnnxGraph::Constant constant{
        .shape = {tensor.dims().begin(), tensor.dims().end()}, .values = {}, .integers = {}};
    // No larger than the message that holds it, so that the product cannot overflow.
    std::size_t count = 1;
    for (const std::int64_t side : constant.shape) {
        if (side < 0 || side > (std::int64_t{1} << 24)) return std::nullopt;
        count *= static_cast<std::size_t>(side);
        if (count > (std::size_t{1} << 28)) return std::nullopt;
    }
    if (tensor.data_type() == onnx::TensorProto::FLOAT) {
        auto values = numbers<float>(tensor.raw_data(), tensor.float_data(), count);
        if (!values) return std::nullopt;
        constant.values = *std::move(values);
    } else if (tensor.data_type() == onnx::TensorProto::INT64) {
        auto values = numbers<std::int64_t>(tensor.raw_data(), tensor.int64_data(), count);
        if (!values) return std::nullopt;
        constant.integers = *std::move(values);
    } else {
        return std::nullopt;
    }
    return constant;
}

OnnxGraph::Node node(const onnx::NodeProto& from) {
    OnnxGraph::Node node{.type = from.op_type(),
                         .inputs = {from.input().begin(), from.input().end()},
                         .outputs = {from.output().begin(), from.output().end()},
                         .integers = {},
                         .numbers = {},
                         .texts = {}};
    for (const auto& attribute : from.attribute()) {
        if (attribute.type() == onnx::AttributeProto::INT) {
            node.integers[attribute.name()] = {attribute.i()};
        } else if (attribute.type() == onnx::AttributeProto::INTS) {
            node.integers[attribute.name()] = {attribute.ints().begin(), attribute.ints().end()};
        } else if (attribute.type() == onnx::AttributeProto::FLOAT) {
            node.numbers[attribute.name()] = attribute.f();
        } else if (attribute.type() == onnx::AttributeProto::STRING) {
            node.texts[attribute.name()] = attribute.s();
        }
    }
    return node;
}

}  // namespace

std::int64_t OnnxGraph::Node::integer(std::string_view name, std::int64_t otherwise) const {
    const auto found = integers.find(name);
    return found == integers.end() || found->second.empty() ? otherwise : found->second.front();
}

std::vector<std::int64_t> OnnxGraph::Node::list(std::string_view name, std::size_t length,
                                                std::int64_t otherwise) const {
    const auto found = integers.find(name);
    return found == integers.end() ? std::vector<std::int64_t>(length, otherwise) : found->second;
}

float OnnxGraph::Node::number(std::string_view name, float otherwise) const {
    const auto found = numbers.find(name);
    return found == numbers.end() ? otherwise : found->second;
}

std::optional<OnnxGraph> OnnxGraph::parse(const std::string& bytes) {
    onnx::ModelProto model;
    if (!model.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) return std::nullopt;
    OnnxGraph graph;
    for (const auto& tensor : model.graph().initializer()) {
        auto read = constant(tensor);
        if (!read) return std::nullopt;
        graph.constants[tensor.name()] = *std::move(read);
    }
    for (const auto& from : model.graph().node()) {
        if (from.op_type() == "Constant" && from.output_size() == 1 && from.attribute_size() == 1) {
            auto read = constant(from.attribute(0).t());
            if (!read) return std::nullopt;
            graph.constants[from.output(0)] = *std::move(read);
        } else {
            graph.nodes.push_back(node(from));
        }
    }
    return graph;
}

}  // namespace marrowby
