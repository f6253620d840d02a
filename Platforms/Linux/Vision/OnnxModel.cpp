// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxModel.h"

#include "Platforms/Linux/Vision/BitmapMat.h"
#include "Platforms/Linux/Vision/DnnlNetwork.h"
#include "Platforms/Linux/Vision/OnnxGraph.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <exception>
#include <utility>
#include <variant>

#include <malloc.h>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/dnn.hpp>

namespace marrowby {

namespace {

constexpr auto cannotLoad = Phrase("This model can’t be run.");
constexpr auto cannotRun = Phrase("The model couldn’t be run.");

}  // namespace

struct OnnxModel::Net {
    /// Which of two runs it.
    std::variant<cv::dnn::Net, DnnlNetwork> network;
    std::vector<NeuralOutput> outputs;

    [[nodiscard]] bool run(std::span<const Input> inputs) {
        if (auto* opencv = std::get_if<cv::dnn::Net>(&network)) return run(*opencv, inputs);
        std::vector<DnnlNetwork::Image> images;
        images.reserve(inputs.size());
        for (const Input& input : inputs)
            images.push_back({input.name, input.width, input.height, input.planes});
        return std::get<DnnlNetwork>(network).run(images, outputs);
    }

  private:
    [[nodiscard]] bool run(cv::dnn::Net& opencv, std::span<const Input> inputs) {
        for (const Input& input : inputs) {
            const std::array shape{1, 3, input.height, input.width};
            opencv.setInput(cv::Mat(4, shape.data(), CV_32F,
                                    const_cast<float*>(input.planes.data())),  // NOLINT
                            input.name);
        }
        std::vector<std::string> names;
        names.reserve(outputs.size());
        for (const NeuralOutput& output : outputs)
            names.push_back(output.name);
        std::vector<cv::Mat> mats;
        opencv.forward(mats, names);
        for (std::size_t i = 0; i < mats.size(); ++i) {
            const cv::Mat values = mats[i].isContinuous() ? mats[i] : mats[i].clone();
            if (values.type() != CV_32F) return false;
            const auto* first = values.ptr<float>();
            outputs[i].values.assign(first, first + values.total());
        }
        return true;
    }
};

OnnxModel::OnnxModel(std::unique_ptr<Net> net) : net_(std::move(net)) {}
OnnxModel::OnnxModel(OnnxModel&&) noexcept = default;
OnnxModel& OnnxModel::operator=(OnnxModel&&) noexcept = default;
OnnxModel::~OnnxModel() = default;

std::expected<OnnxModel, std::string> OnnxModel::load(const OnnxFile& file, Engine preferred) {
    auto net = std::make_unique<Net>();
    std::vector<std::string> names;
    for (const OnnxFile::Value& output : file.outputs) {
        names.push_back(output.name);
        net->outputs.push_back({output.name, {}});
    }
    cv::setNumThreads(1);
    // Errors are returned; OpenCV would also print them.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    if (preferred == Engine::oneDnn) {
        if (auto graph = OnnxGraph::parse(file.bytes)) {
            if (auto network = DnnlNetwork::create(*std::move(graph), names)) {
                net->network = *std::move(network);
                return OnnxModel(std::move(net));
            }
        }
    }
    try {
        auto opencv = cv::dnn::readNetFromONNX(file.bytes.data(), file.bytes.size());
        if (opencv.empty()) return std::unexpected(translated(cannotLoad));
        opencv.setPreferableBackend(cv::dnn::DNN_BACKEND_OPENCV);
        opencv.setPreferableTarget(cv::dnn::DNN_TARGET_CPU);
        net->network = std::move(opencv);
    } catch (const std::exception&) {
        // OpenCV's text names a source line, which tells the user nothing.
        return std::unexpected(translated(cannotLoad));
    }
    return OnnxModel(std::move(net));
}

void OnnxModel::trimMemory() {
    DnnlNetwork::forgetUnused();
    ::malloc_trim(0);
}

OnnxModel::Engine OnnxModel::engine() const {
    return std::holds_alternative<DnnlNetwork>(net_->network) ? Engine::oneDnn : Engine::openCv;
}

std::expected<std::span<const NeuralOutput>, std::string> OnnxModel::run(
    std::span<const Input> inputs) {
    const bool areSound = std::ranges::all_of(inputs, [](const Input& input) {
        return input.width > 0 && input.height > 0 &&
               input.planes.size() == static_cast<std::size_t>(input.width) *
                                          static_cast<std::size_t>(input.height) * 3;
    });
    try {
        if (!areSound || !net_->run(inputs)) return std::unexpected(translated(cannotRun));
    } catch (const std::exception&) {
        return std::unexpected(translated(cannotRun));
    }
    return net_->outputs;
}

void fillPlanes(OnnxModel::Input& input, const cv::Mat& bgr, NeuralModels::ChannelOrder order) {
    const std::size_t plane = bgr.total();
    input.width = bgr.cols;
    input.height = bgr.rows;
    input.planes.resize(plane * 3);
    std::array<float*, 3> to{input.planes.data(), input.planes.data() + plane,
                             input.planes.data() + 2 * plane};
    if (order == NeuralModels::ChannelOrder::rgb) std::swap(to[0], to[2]);
    for (int row = 0; row < bgr.rows; ++row) {
        const auto* from = bgr.ptr<std::uint8_t>(row);
        for (int column = 0; column < bgr.cols; ++column) {
            for (float*& channel : to)
                *channel++ = *from++;
        }
    }
}

bool fillInput(OnnxModel::Input& input, const Bitmap& image, NeuralModels::ChannelOrder order) {
    try {
        const auto bgr = bgrMat(image);
        if (bgr) fillPlanes(input, *bgr, order);
        return bgr.has_value();
    } catch (const cv::Exception&) {
        return false;
    }
}

}  // namespace marrowby
