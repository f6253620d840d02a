// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/DnnlNetwork.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <map>
#include <numeric>
#include <set>
#include <string_view>
#include <unordered_map>
#include <utility>

#include <dnnl.hpp>

/// libgomp's, which oneDNN divides its work by. Its own header is the compiler's.
// NOLINTNEXTLINE(readability-identifier-naming)
extern "C" void omp_set_num_threads(int count);

namespace marrowby {

namespace {

using Node = OnnxGraph::Node;
using Shape = std::vector<std::int64_t>;
using Buffer = std::shared_ptr<std::vector<float>>;

/// Of one picture. The shape is in the file's order; four dimensions are stored with the channels
/// last, others row by row.
struct Value {
    Shape shape;
    Buffer buffer;
};

std::size_t count(const Shape& shape) {
    return static_cast<std::size_t>(
        std::accumulate(shape.begin(), shape.end(), std::int64_t{1}, std::multiplies<>()));
}

/// From one order of the same dimensions to another: `order` names the source's dimension for each
/// of the target's. Both row by row.
void permute(const float* from, const Shape& shape, const std::vector<std::size_t>& order,
             float* to) {
    Shape strides(shape.size(), 1);
    for (std::size_t i = shape.size() - 1; i > 0; --i)
        strides[i - 1] = strides[i] * shape[i];
    Shape index(shape.size(), 0);
    std::int64_t at = 0;
    for (std::size_t done = 0, all = count(shape); done < all; ++done) {
        *to++ = from[at];
        for (std::size_t i = order.size(); i-- > 0;) {
            const std::size_t dimension = order[i];
            at += strides[dimension];
            if (++index[dimension] < shape[dimension]) break;
            at -= strides[dimension] * shape[dimension];
            index[dimension] = 0;
        }
    }
}

/// Rows of `columns` values, turned.
void turn(const float* from, std::size_t rows, std::size_t columns, float* to) {
    for (std::size_t i = 0; i < rows; ++i) {
        for (std::size_t j = 0; j < columns; ++j)
            to[j * rows + i] = from[i * columns + j];
    }
}

/// From the file's order.
void store(const float* rows, const Shape& shape, float* to) {
    if (shape.size() == 4) {
        const auto channels = static_cast<std::size_t>(shape[1]);
        turn(rows, channels, count(shape) / channels, to);
    } else {
        std::copy_n(rows, count(shape), to);
    }
}

void unstore(const float* from, const Shape& shape, float* rows) {
    if (shape.size() == 4) {
        const auto channels = static_cast<std::size_t>(shape[1]);
        turn(from, count(shape) / channels, channels, rows);
    } else {
        std::copy_n(from, count(shape), rows);
    }
}

bool areAll(const Shape& numbers, std::int64_t wanted) {
    return std::ranges::all_of(numbers, [&](std::int64_t number) { return number == wanted; });
}

const OnnxGraph::Constant* constant(const OnnxGraph& graph, const Node& node, std::size_t input) {
    if (input >= node.inputs.size()) return nullptr;
    const auto found = graph.constants.find(node.inputs[input]);
    return found == graph.constants.end() ? nullptr : &found->second;
}

const Shape* integers(const OnnxGraph& graph, const Node& node, std::size_t input) {
    const auto* found = constant(graph, node, input);
    return found && !found->integers.empty() ? &found->integers : nullptr;
}

/// How many times as large a Resize makes each side; nothing where it does more than repeat pixels.
std::optional<std::int64_t> enlargement(const OnnxGraph& graph, const Node& node) {
    const auto text = [&](const char* name) {
        const auto found = node.texts.find(name);
        return found == node.texts.end() ? std::string() : found->second;
    };
    const std::string mode = text("coordinate_transformation_mode");
    const std::string nearest = text("nearest_mode");
    // Before version 11 of the operators that was how it is done.
    const bool repeats =
        mode.empty() ? node.inputs.size() == 2 : mode == "asymmetric" && nearest == "floor";
    const auto* scales = constant(graph, node, node.inputs.size() == 2 ? 1 : 2);
    if (text("mode") != "nearest" || !repeats || !scales || scales->values.size() != 4 ||
        node.inputs.size() > 3) {
        return std::nullopt;
    }
    const float scale = scales->values[2];
    if (scales->values[0] != 1 || scales->values[1] != 1 || scales->values[3] != scale ||
        !(scale >= 1 && scale <= 8) || scale != std::round(scale)) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(scale);
}

bool isKnownPool(const Node& node) {
    return areAll(node.list("pads", 4, 0), 0) && node.integer("ceil_mode", 0) == 0 &&
           node.list("kernel_shape", 0, 0).size() == 2 && node.list("strides", 2, 1).size() == 2 &&
           areAll(node.list("dilations", 2, 1), 1) && !node.texts.contains("auto_pad");
}

bool isKnown(const OnnxGraph& graph, const Node& node) {
    const std::string& type = node.type;
    const auto hasFloats = [&](std::size_t input) {
        const auto* found = constant(graph, node, input);
        return found && !found->values.empty();
    };
    if (node.inputs.empty() || node.outputs.empty()) return false;
    if (type == "Conv") {
        return hasFloats(1) && constant(graph, node, 1)->shape.size() == 4 &&
               (node.inputs.size() == 2 || hasFloats(2)) && !node.texts.contains("auto_pad");
    }
    if (type == "BatchNormalization") {
        return hasFloats(1) && hasFloats(2) && hasFloats(3) && hasFloats(4);
    }
    if (type == "Gemm") {
        return hasFloats(1) && hasFloats(2) && node.number("alpha", 1) == 1 &&
               node.number("beta", 1) == 1 && node.integer("transA", 0) == 0;
    }
    if (type == "MatMul") return hasFloats(1) && constant(graph, node, 1)->shape.size() == 2;
    if (type == "PRelu") return hasFloats(1);
    // Later versions of the operators have the limits as inputs.
    if (type == "Clip") return node.inputs.size() == 1;
    if (type == "Reshape") return integers(graph, node, 1) != nullptr;
    if (type == "Slice") {
        return integers(graph, node, 1) && integers(graph, node, 2) && integers(graph, node, 3) &&
               (node.inputs.size() < 5 ||
                (integers(graph, node, 4) && areAll(*integers(graph, node, 4), 1)));
    }
    if (type == "Resize") return enlargement(graph, node).has_value();
    if (type == "MaxPool" || type == "AveragePool") return isKnownPool(node);
    if (type == "Pad") return node.inputs.size() == 1 && areAll(node.list("pads", 1, 1), 0);
    if (type == "Flatten" || type == "Concat" || type == "Softmax")
        return node.integer("axis", 1) == 1;
    static const std::set<std::string> simple{"Relu",    "Sigmoid",   "Add",
                                              "Sub",     "Mul",       "GlobalAveragePool",
                                              "Dropout", "Transpose", "Identity"};
    return simple.contains(type);
}

struct Unplanned {};

void expect(bool holds) {
    if (!holds) throw Unplanned();
}

}  // namespace

/// The steps of a run at certain sizes, and the memory between them.
struct DnnlNetwork::Plan {
    std::vector<Value> images;
    std::vector<std::function<void()>> steps;
    std::vector<Value> outputs;
    dnnl::engine engine{dnnl::engine::kind::cpu, 0};
    dnnl::stream stream{engine};
    /// What a convolution needs while it runs.
    std::vector<float> scratch;

    [[nodiscard]] bool fits(std::span<const Image> given) const {
        return std::ranges::equal(given, images, [](const Image& image, const Value& value) {
            return image.height == value.shape[2] && image.width == value.shape[3];
        });
    }
    void run(std::span<const Image> given, std::span<NeuralOutput> results) {
        for (std::size_t i = 0; i < given.size(); ++i)
            store(given[i].planes.data(), images[i].shape, images[i].buffer->data());
        for (const auto& step : steps)
            step();
        for (std::size_t i = 0; i < results.size(); ++i) {
            std::vector<float>& values = results[i].values;
            values.resize(count(outputs[i].shape));
            unstore(outputs[i].buffer->data(), outputs[i].shape, values.data());
        }
    }
};

/// Makes a plan; throws Unplanned.
class DnnlNetwork::Planner {
  public:
    Planner(const OnnxGraph& graph, const std::vector<std::string>& outputs, Plan& plan)
        : graph_(graph), outputs_(outputs), plan_(plan), isDone_(graph.nodes.size()) {}

    void make(std::span<const Image> images) {
        for (const Image& image : images)
            plan_.images.push_back(make(image.name, {1, 3, image.height, image.width}));
        for (std::size_t i = 0; i < graph_.nodes.size(); ++i) {
            if (!isDone_[i]) plan(i);
            release(i);
        }
        for (const std::string& name : outputs_)
            plan_.outputs.push_back(value(name));
    }

  private:
    void plan(std::size_t index);
    void convolve(std::size_t index);
    void pool(const Node& node);
    void multiply(const Node& node);
    template <typename With>
    void combine(const Node& node, With with);
    template <typename Change>
    void change(const Node& node, Change each);
    void join(const Node& node);
    void reshape(const Node& node, const Shape& wanted);
    void transpose(const Node& node);
    void slice(const Node& node);
    void enlarge(const Node& node);
    void softmax(const Node& node);

    void add(std::function<void()> step) { plan_.steps.push_back(std::move(step)); }
    [[nodiscard]] Value value(const std::string& name) const;
    /// In memory that no later step needs.
    Value make(const std::string& name, const Shape& shape);
    /// The only node that uses this output.
    [[nodiscard]] std::optional<std::size_t> onlyUser(const std::string& name) const;
    void release(std::size_t index);

    const OnnxGraph& graph_;
    const std::vector<std::string>& outputs_;
    Plan& plan_;
    std::map<std::string, Value, std::less<>> values_;
    std::vector<Buffer> free_;
    std::vector<bool> isDone_;
};

Value DnnlNetwork::Planner::value(const std::string& name) const {
    if (const auto found = values_.find(name); found != values_.end()) return found->second;
    const auto found = graph_.constants.find(name);
    expect(found != graph_.constants.end() && !found->second.values.empty());
    const OnnxGraph::Constant& from = found->second;
    expect(from.values.size() == count(from.shape));
    expect(from.shape.size() != 4 || from.shape[0] == 1);
    Value value{from.shape, std::make_shared<std::vector<float>>(from.values.size())};
    store(from.values.data(), from.shape, value.buffer->data());
    return value;
}

Value DnnlNetwork::Planner::make(const std::string& name, const Shape& shape) {
    expect(std::ranges::all_of(shape, [](std::int64_t side) { return side > 0; }));
    expect(shape.size() != 4 || shape[0] == 1);
    const std::size_t size = count(shape);
    // The smallest that is large enough, else the largest.
    std::ranges::sort(free_, {}, [](const Buffer& buffer) { return buffer->size(); });
    auto found =
        std::ranges::find_if(free_, [&](const Buffer& buffer) { return buffer->size() >= size; });
    if (found == free_.end() && !free_.empty()) found = free_.end() - 1;
    Buffer buffer;
    if (found == free_.end()) {
        buffer = std::make_shared<std::vector<float>>(size);
    } else {
        buffer = *found;
        free_.erase(found);
        if (buffer->size() < size) buffer->resize(size);
    }
    return values_[name] = {shape, std::move(buffer)};
}

std::optional<std::size_t> DnnlNetwork::Planner::onlyUser(const std::string& name) const {
    if (std::ranges::find(outputs_, name) != outputs_.end()) return std::nullopt;
    std::optional<std::size_t> user;
    for (std::size_t i = 0; i < graph_.nodes.size(); ++i) {
        for (const std::string& input : graph_.nodes[i].inputs) {
            if (input != name) continue;
            if (user) return std::nullopt;
            user = i;
        }
    }
    return user;
}

/// The memory of what nobody uses after this node.
void DnnlNetwork::Planner::release(std::size_t index) {
    const auto isUsedLater = [&](const std::string& name) {
        if (std::ranges::find(outputs_, name) != outputs_.end()) return true;
        for (std::size_t i = index + 1; i < graph_.nodes.size(); ++i) {
            if (isDone_[i]) continue;
            if (std::ranges::find(graph_.nodes[i].inputs, name) != graph_.nodes[i].inputs.end())
                return true;
        }
        return false;
    };
    for (const std::string& name : graph_.nodes[index].inputs) {
        const auto found = values_.find(name);
        if (found == values_.end() || isUsedLater(name)) continue;
        if (std::ranges::find(free_, found->second.buffer) == free_.end())
            free_.push_back(found->second.buffer);
    }
}

void DnnlNetwork::Planner::plan(std::size_t index) {
    const Node& node = graph_.nodes[index];
    const std::string& type = node.type;
    isDone_[index] = true;
    if (type == "Conv") return convolve(index);
    if (type == "MaxPool" || type == "AveragePool" || type == "GlobalAveragePool")
        return pool(node);
    if (type == "Gemm" || type == "MatMul") return multiply(node);
    if (type == "Add") return combine(node, [](float a, float b) { return a + b; });
    if (type == "Sub") return combine(node, [](float a, float b) { return a - b; });
    if (type == "Mul") return combine(node, [](float a, float b) { return a * b; });
    if (type == "PRelu")
        return combine(node,
                       [](float a, float b) { return std::max(a, 0.0F) + b * std::min(a, 0.0F); });
    if (type == "Concat") return join(node);
    if (type == "Transpose") return transpose(node);
    if (type == "Slice") return slice(node);
    if (type == "Resize") return enlarge(node);
    if (type == "Softmax") return softmax(node);
    if (type == "Reshape") return reshape(node, *integers(graph_, node, 1));
    if (type == "Flatten") return reshape(node, {0, -1});
    if (type == "Relu") return change(node, [](float x) { return std::max(x, 0.0F); });
    if (type == "Sigmoid") return change(node, [](float x) { return 1 / (1 + std::exp(-x)); });
    if (type == "Clip") {
        const float least = node.number("min", std::numeric_limits<float>::lowest());
        const float most = node.number("max", std::numeric_limits<float>::max());
        return change(node, [least, most](float x) { return std::min(std::max(x, least), most); });
    }
    if (type == "Pad" || type == "Identity" || type == "Dropout")
        return change(node, [](float x) { return x; });
    expect(false);
}

/// A convolution with the normalisation and the activation behind it.
void DnnlNetwork::Planner::convolve(std::size_t index) {
    using Tag = dnnl::memory::format_tag;
    constexpr auto f32 = dnnl::memory::data_type::f32;
    const Node& node = graph_.nodes[index];
    const Value from = value(node.inputs[0]);
    const OnnxGraph::Constant& kernel = *constant(graph_, node, 1);
    expect(from.shape.size() == 4);
    const std::int64_t groups = node.integer("group", 1);
    const std::int64_t outs = kernel.shape[0];
    const std::int64_t ins = kernel.shape[1];
    const Shape strides = node.list("strides", 2, 1);
    const Shape pads = node.list("pads", 4, 0);
    const Shape dilations = node.list("dilations", 2, 1);
    expect(groups > 0 && outs % groups == 0 && from.shape[1] == ins * groups &&
           strides.size() == 2 && pads.size() == 4 && dilations.size() == 2);
    Shape shape{1, outs};
    for (std::size_t i = 0; i < 2; ++i) {
        const std::int64_t reach = dilations[i] * (kernel.shape[i + 2] - 1) + 1;
        expect(strides[i] > 0 && dilations[i] > 0);
        shape.push_back((from.shape[i + 2] + pads[i] + pads[i + 2] - reach) / strides[i] + 1);
    }
    std::vector<float> weights = kernel.values;
    expect(weights.size() == count(kernel.shape));
    std::vector<float> bias(static_cast<std::size_t>(outs), 0);
    if (const auto* given = constant(graph_, node, 2)) {
        expect(given->values.size() == bias.size());
        bias = given->values;
    }

    dnnl::post_ops after;
    std::string name = node.outputs[0];
    const auto next = [&]() -> const Node* {
        const auto user = onlyUser(name);
        return user && graph_.nodes[*user].inputs[0] == name ? &graph_.nodes[*user] : nullptr;
    };
    const auto take = [&](const Node& taken) {
        isDone_[static_cast<std::size_t>(&taken - graph_.nodes.data())] = true;
        name = taken.outputs[0];
    };
    if (const Node* norm = next(); norm && norm->type == "BatchNormalization") {
        const auto& factor = constant(graph_, *norm, 1)->values;
        const auto& shift = constant(graph_, *norm, 2)->values;
        const auto& mean = constant(graph_, *norm, 3)->values;
        const auto& variance = constant(graph_, *norm, 4)->values;
        for (const auto* values : {&factor, &shift, &mean, &variance})
            expect(values->size() == bias.size());
        const std::size_t each = weights.size() / bias.size();
        for (std::size_t i = 0; i < bias.size(); ++i) {
            const float scale = factor[i] / std::sqrt(variance[i] + norm->number("epsilon", 1e-5F));
            for (std::size_t j = 0; j < each; ++j)
                weights[i * each + j] *= scale;
            bias[i] = (bias[i] - mean[i]) * scale + shift[i];
        }
        take(*norm);
    }
    if (const Node* activation = next()) {
        using Algorithm = dnnl::algorithm;
        if (activation->type == "Relu") {
            after.append_eltwise(1, Algorithm::eltwise_relu, 0, 0);
            take(*activation);
        } else if (activation->type == "Clip") {
            after.append_eltwise(1, Algorithm::eltwise_clip,
                                 activation->number("min", std::numeric_limits<float>::lowest()),
                                 activation->number("max", std::numeric_limits<float>::max()));
            take(*activation);
        }
    }

    dnnl::primitive_attr attributes;
    attributes.set_post_ops(after);
    // Its own memory is a thread's; runs may be on different threads.
    attributes.set_scratchpad_mode(dnnl::scratchpad_mode::user);
    const Value to = make(name, shape);
    const dnnl::memory::desc source(from.shape, f32, Tag::nhwc);
    const dnnl::memory::desc target(to.shape, f32, Tag::nhwc);
    const Shape grouped{groups, outs / groups, ins, kernel.shape[2], kernel.shape[3]};
    const dnnl::memory::desc given = groups > 1 ? dnnl::memory::desc(grouped, f32, Tag::goihw)
                                                : dnnl::memory::desc(kernel.shape, f32, Tag::oihw);
    const dnnl::memory::desc any = groups > 1 ? dnnl::memory::desc(grouped, f32, Tag::any)
                                              : dnnl::memory::desc(kernel.shape, f32, Tag::any);
    const dnnl::convolution_forward::desc wanted(
        dnnl::prop_kind::forward_inference, dnnl::algorithm::convolution_auto, source, any,
        {{outs}, f32, Tag::x}, target, strides, {dilations[0] - 1, dilations[1] - 1},
        {pads[0], pads[1]}, {pads[2], pads[3]});
    const dnnl::convolution_forward::primitive_desc chosen(wanted, attributes, plan_.engine);
    const dnnl::memory packed(chosen.weights_desc(), plan_.engine);
    dnnl::memory plain(given, plan_.engine, weights.data());
    dnnl::reorder(plain, packed).execute(plan_.stream, plain, const_cast<dnnl::memory&>(packed));
    const dnnl::memory offsets(chosen.bias_desc(), plan_.engine);
    std::ranges::copy(bias, static_cast<float*>(offsets.get_data_handle()));
    const std::size_t needed = chosen.scratchpad_desc().get_size() / sizeof(float) + 1;
    if (plan_.scratch.size() < needed) plan_.scratch.resize(needed);

    add([&plan = plan_, from = from.buffer, to = to.buffer,
         run = dnnl::primitive(dnnl::convolution_forward(chosen)),
         arguments = std::unordered_map<int, dnnl::memory>{
             {DNNL_ARG_SRC, dnnl::memory(source, plan_.engine, nullptr)},
             {DNNL_ARG_WEIGHTS, packed},
             {DNNL_ARG_BIAS, offsets},
             {DNNL_ARG_DST, dnnl::memory(target, plan_.engine, nullptr)},
             {DNNL_ARG_SCRATCHPAD,
              dnnl::memory(chosen.scratchpad_desc(), plan_.engine, nullptr)}}]() mutable {
        arguments.at(DNNL_ARG_SRC).set_data_handle(from->data());
        arguments.at(DNNL_ARG_DST).set_data_handle(to->data());
        arguments.at(DNNL_ARG_SCRATCHPAD).set_data_handle(plan.scratch.data());
        run.execute(plan.stream, arguments);
    });
}

void DnnlNetwork::Planner::pool(const Node& node) {
    const Value from = value(node.inputs[0]);
    expect(from.shape.size() == 4);
    const std::int64_t channels = from.shape[1];
    const std::int64_t width = from.shape[3];
    const bool isGlobal = node.type == "GlobalAveragePool";
    const bool isMean = node.type != "MaxPool";
    const Shape kernel = isGlobal ? Shape{from.shape[2], width} : node.list("kernel_shape", 2, 1);
    const Shape strides = node.list("strides", 2, 1);
    expect(kernel[0] > 0 && kernel[1] > 0 && kernel[0] <= from.shape[2] && kernel[1] <= width &&
           strides[0] > 0 && strides[1] > 0);
    const Value to =
        make(node.outputs[0], {1, channels, (from.shape[2] - kernel[0]) / strides[0] + 1,
                               (width - kernel[1]) / strides[1] + 1});
    add([=] {
        float* out = to.buffer->data();
        for (std::int64_t y = 0; y < to.shape[2]; ++y) {
            for (std::int64_t x = 0; x < to.shape[3]; ++x, out += channels) {
                std::fill_n(out, channels, isMean ? 0 : std::numeric_limits<float>::lowest());
                for (std::int64_t i = 0; i < kernel[0] * kernel[1]; ++i) {
                    const std::int64_t row = y * strides[0] + i / kernel[1];
                    const std::int64_t column = x * strides[1] + i % kernel[1];
                    const float* in = from.buffer->data() + (row * width + column) * channels;
                    if (isMean) {
                        for (std::int64_t c = 0; c < channels; ++c)
                            out[c] += in[c];
                    } else {
                        for (std::int64_t c = 0; c < channels; ++c)
                            out[c] = std::max(out[c], in[c]);
                    }
                }
                if (!isMean) continue;
                for (std::int64_t c = 0; c < channels; ++c)
                    out[c] /= static_cast<float>(kernel[0] * kernel[1]);
            }
        }
    });
}

/// A row times a matrix of weights.
void DnnlNetwork::Planner::multiply(const Node& node) {
    const Value from = value(node.inputs[0]);
    const OnnxGraph::Constant& matrix = *constant(graph_, node, 1);
    expect(from.shape.size() == 2 && from.shape[0] == 1 && matrix.shape.size() == 2);
    const bool isTransposed = node.integer("transB", 0) != 0;
    const auto ins = static_cast<std::size_t>(from.shape[1]);
    const auto outs = static_cast<std::size_t>(matrix.shape[isTransposed ? 0 : 1]);
    expect(matrix.values.size() == ins * outs);
    std::vector<float> bias(outs, 0);
    if (const auto* given = constant(graph_, node, 2)) {
        expect(given->values.size() == outs);
        bias = given->values;
    }
    // By rows of inputs, as the other operators have it.
    std::vector<float> weights(matrix.values);
    if (isTransposed) {
        for (std::size_t i = 0; i < ins * outs; ++i)
            weights[i] = matrix.values[i % outs * ins + i / outs];
    }
    const Value to = make(node.outputs[0], {1, static_cast<std::int64_t>(outs)});
    add([=, weights = std::move(weights), bias = std::move(bias)] {
        float* out = to.buffer->data();
        std::ranges::copy(bias, out);
        for (std::size_t i = 0; i < ins; ++i) {
            const float factor = (*from.buffer)[i];
            const float* row = &weights[i * outs];
            for (std::size_t j = 0; j < outs; ++j)
                out[j] += factor * row[j];
        }
    });
}

/// Element by element; the second operand is repeated where it is smaller.
template <typename With>
void DnnlNetwork::Planner::combine(const Node& node, With with) {
    Value a = value(node.inputs[0]);
    Value b = value(node.inputs.at(1));
    if (count(a.shape) < count(b.shape) && (node.type == "Add" || node.type == "Mul"))
        std::swap(a, b);
    const std::size_t size = count(a.shape);
    const std::size_t other = count(b.shape);
    // What repeats lies last in memory, or there is only one value.
    const std::int64_t channels = a.shape.size() == 4 ? a.shape[1] : 0;
    const bool isPerChannel = channels > 0 && static_cast<std::int64_t>(other) == channels &&
                              (b.shape.size() == 4   ? b.shape[1]
                               : b.shape.size() == 3 ? b.shape[0]
                                                     : 0) == channels;
    expect(other == 1 || a.shape == b.shape || isPerChannel);
    const Value to = make(node.outputs[0], a.shape);
    add([=, a = a.buffer, b = b.buffer, to = to.buffer] {
        const float* x = a->data();
        const float* y = b->data();
        float* out = to->data();
        if (other == 1) {
            for (std::size_t i = 0; i < size; ++i)
                out[i] = with(x[i], *y);
            return;
        }
        for (std::size_t i = 0; i < size; i += other) {
            for (std::size_t j = 0; j < other; ++j)
                out[i + j] = with(x[i + j], y[j]);
        }
    });
}

template <typename Change>
void DnnlNetwork::Planner::change(const Node& node, Change each) {
    const Value from = value(node.inputs[0]);
    const Value to = make(node.outputs[0], from.shape);
    add([from = from.buffer, to = to.buffer, size = count(to.shape), each] {
        std::transform(from->begin(), from->begin() + static_cast<std::ptrdiff_t>(size),
                       to->begin(), each);
    });
}

/// Channel beside channel.
void DnnlNetwork::Planner::join(const Node& node) {
    std::vector<Value> parts;
    Shape shape;
    for (const std::string& name : node.inputs) {
        parts.push_back(value(name));
        const Shape& part = parts.back().shape;
        expect((part.size() == 4 || part.size() == 2) && part[0] == 1);
        if (shape.empty()) {
            shape = part;
            continue;
        }
        expect(part.size() == shape.size() &&
               std::equal(part.begin() + 2, part.end(), shape.begin() + 2));
        shape[1] += part[1];
    }
    const Value to = make(node.outputs[0], shape);
    add([parts, to] {
        const auto all = static_cast<std::size_t>(to.shape[1]);
        const std::size_t pixels = count(to.shape) / all;
        float* out = to.buffer->data();
        for (const Value& part : parts) {
            const auto channels = static_cast<std::size_t>(part.shape[1]);
            for (std::size_t i = 0; i < pixels; ++i)
                std::copy_n(part.buffer->data() + i * channels, channels, out + i * all);
            out += channels;
        }
    });
}

void DnnlNetwork::Planner::reshape(const Node& node, const Shape& wanted) {
    const Value from = value(node.inputs[0]);
    Shape shape = wanted;
    std::int64_t known = 1;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == 0) shape[i] = from.shape.at(i);
        if (shape[i] > 0) known *= shape[i];
    }
    for (std::int64_t& side : shape) {
        if (side < 0) side = static_cast<std::int64_t>(count(from.shape)) / known;
    }
    expect(count(shape) == count(from.shape));
    const Value to = make(node.outputs[0], shape);
    add([from, to, rows = std::vector<float>(count(shape))]() mutable {
        unstore(from.buffer->data(), from.shape, rows.data());
        store(rows.data(), to.shape, to.buffer->data());
    });
}

void DnnlNetwork::Planner::transpose(const Node& node) {
    const Value from = value(node.inputs[0]);
    std::vector<std::size_t> order;
    for (const std::int64_t dimension : node.list("perm", 0, 0))
        order.push_back(static_cast<std::size_t>(dimension));
    std::vector<std::size_t> sorted = order;
    std::ranges::sort(sorted);
    Shape shape;
    expect(order.size() == from.shape.size());
    for (std::size_t i = 0; i < order.size(); ++i) {
        expect(sorted[i] == i);
        shape.push_back(from.shape[order[i]]);
    }
    const Value to = make(node.outputs[0], shape);
    add([from, to, order, rows = std::vector<float>(count(shape)),
         turned = std::vector<float>(count(shape))]() mutable {
        unstore(from.buffer->data(), from.shape, rows.data());
        permute(rows.data(), from.shape, order, turned.data());
        store(turned.data(), to.shape, to.buffer->data());
    });
}

void DnnlNetwork::Planner::slice(const Node& node) {
    const Value from = value(node.inputs[0]);
    const Shape& starts = *integers(graph_, node, 1);
    const Shape& ends = *integers(graph_, node, 2);
    const Shape& axes = *integers(graph_, node, 3);
    expect(starts.size() == 1 && ends.size() == 1 && axes.size() == 1 && from.shape.size() != 4);
    const auto dimensions = static_cast<std::int64_t>(from.shape.size());
    const std::int64_t axis = axes[0] < 0 ? axes[0] + dimensions : axes[0];
    expect(axis >= 0 && axis < dimensions);
    const std::int64_t side = from.shape[static_cast<std::size_t>(axis)];
    const auto inside = [&](std::int64_t at) {
        return std::clamp<std::int64_t>(at < 0 ? at + side : at, 0, side);
    };
    const std::int64_t begin = inside(starts[0]);
    Shape shape = from.shape;
    shape[static_cast<std::size_t>(axis)] = inside(ends[0]) - begin;
    std::int64_t below = 1;
    for (std::int64_t i = axis + 1; i < dimensions; ++i)
        below *= shape[static_cast<std::size_t>(i)];
    const Value to = make(node.outputs[0], shape);
    const auto length = static_cast<std::size_t>(shape[static_cast<std::size_t>(axis)] * below);
    const auto step = static_cast<std::size_t>(side * below);
    const auto offset = static_cast<std::size_t>(begin * below);
    add([=] {
        for (std::size_t i = 0; i * length < count(to.shape); ++i)
            std::copy_n(from.buffer->data() + i * step + offset, length,
                        to.buffer->data() + i * length);
    });
}

void DnnlNetwork::Planner::enlarge(const Node& node) {
    const std::int64_t scale = enlargement(graph_, node).value_or(0);
    const Value from = value(node.inputs[0]);
    expect(from.shape.size() == 4);
    const Value to =
        make(node.outputs[0], {1, from.shape[1], from.shape[2] * scale, from.shape[3] * scale});
    add([=] {
        const std::int64_t channels = to.shape[1];
        float* out = to.buffer->data();
        for (std::int64_t y = 0; y < to.shape[2]; ++y) {
            for (std::int64_t x = 0; x < to.shape[3]; ++x, out += channels)
                std::copy_n(
                    from.buffer->data() + (y / scale * from.shape[3] + x / scale) * channels,
                    channels, out);
        }
    });
}

void DnnlNetwork::Planner::softmax(const Node& node) {
    const Value from = value(node.inputs[0]);
    expect(from.shape.size() == 2 && from.shape[0] == 1);
    const Value to = make(node.outputs[0], from.shape);
    add([from = from.buffer, to = to.buffer, size = count(to.shape)] {
        const std::span in(from->data(), size);
        const std::span out(to->data(), size);
        const float most = std::ranges::max(in);
        std::ranges::transform(in, out.begin(), [&](float x) { return std::exp(x - most); });
        const float sum = std::accumulate(out.begin(), out.end(), 0.0F);
        for (float& x : out)
            x /= sum;
    });
}

DnnlNetwork::DnnlNetwork(OnnxGraph graph, std::vector<std::string> outputs)
    : graph_(std::move(graph)), outputs_(std::move(outputs)) {}
DnnlNetwork::DnnlNetwork(DnnlNetwork&&) noexcept = default;
DnnlNetwork& DnnlNetwork::operator=(DnnlNetwork&&) noexcept = default;
DnnlNetwork::~DnnlNetwork() = default;

namespace {

/// Whether oneDNN has code of its own for this processor: its general code is slower than OpenCV's.
bool isQuickHere() {
    static const bool isQuick = [] {
        constexpr auto f32 = dnnl::memory::data_type::f32;
        using Tag = dnnl::memory::format_tag;
        const dnnl::memory::desc picture({1, 16, 8, 8}, f32, Tag::nhwc);
        try {
            // Each channel by itself, which the general code does worst.
            const dnnl::convolution_forward::desc wanted(
                dnnl::prop_kind::forward_inference, dnnl::algorithm::convolution_auto, picture,
                {{16, 1, 1, 3, 3}, f32, Tag::any}, {{16}, f32, Tag::x}, picture, {1, 1}, {1, 1},
                {1, 1});
            const dnnl::convolution_forward::primitive_desc chosen(
                wanted, dnnl::engine(dnnl::engine::kind::cpu, 0));
            return std::string_view(chosen.impl_info_str()).substr(0, 3) != "ref";
        } catch (const dnnl::error&) {
            return false;
        }
    }();
    return isQuick;
}

}  // namespace

std::optional<DnnlNetwork> DnnlNetwork::create(OnnxGraph graph, std::vector<std::string> outputs) {
    if (!isQuickHere()) return std::nullopt;
    for (const Node& node : graph.nodes) {
        if (!isKnown(graph, node)) return std::nullopt;
    }
    return DnnlNetwork(std::move(graph), std::move(outputs));
}

void DnnlNetwork::forgetUnused() {
    const int capacity = dnnl::get_primitive_cache_capacity();
    dnnl::set_primitive_cache_capacity(0);
    dnnl::set_primitive_cache_capacity(capacity);
}

bool DnnlNetwork::run(std::span<const Image> images, std::span<NeuralOutput> outputs) {
    // Of the calling thread only.
    omp_set_num_threads(1);
    if (!plan_ || !plan_->fits(images)) {
        plan_.reset();
        try {
            auto plan = std::make_unique<Plan>();
            Planner(graph_, outputs_, *plan).make(images);
            plan_ = std::move(plan);
        } catch (const Unplanned&) {
            return false;
        }
    }
    plan_->run(images, outputs);
    return true;
}

}  // namespace marrowby
