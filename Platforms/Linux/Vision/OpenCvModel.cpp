#include "Platforms/Linux/Vision/OpenCvModel.h"

#include "Platforms/Linux/Vision/BitmapMat.h"

#include <array>
#include <cstddef>
#include <exception>
#include <utility>

#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/dnn.hpp>

namespace marrowby {

namespace {

constexpr const char* cannotLoad = "OpenCV can’t run this model.";
constexpr const char* cannotRun = "The model couldn’t be run.";

}  // namespace

struct OpenCvModel::Net {
    cv::dnn::Net net;
    std::vector<std::string> outputNames;
    std::vector<cv::Mat> mats;
    std::vector<NeuralOutput> outputs;
};

OpenCvModel::OpenCvModel(std::unique_ptr<Net> net) : net_(std::move(net)) {}
OpenCvModel::OpenCvModel(OpenCvModel&&) noexcept = default;
OpenCvModel& OpenCvModel::operator=(OpenCvModel&&) noexcept = default;
OpenCvModel::~OpenCvModel() = default;

std::expected<OpenCvModel, std::string> OpenCvModel::load(const OnnxFile& file) {
    auto net = std::make_unique<Net>();
    for (const OnnxFile::Value& output : file.outputs) {
        net->outputNames.push_back(output.name);
        net->outputs.push_back({output.name, {}});
    }
    cv::setNumThreads(1);
    // Errors are returned; OpenCV would also print them.
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    try {
        net->net = cv::dnn::readNetFromONNX(file.bytes.data(), file.bytes.size());
        if (net->net.empty()) return std::unexpected(cannotLoad);
        net->net.setPreferableBackend(cv::dnn::DNN_BACKEND_OPENCV);
        net->net.setPreferableTarget(cv::dnn::DNN_TARGET_CPU);
    } catch (const std::exception&) {
        // OpenCV's text names a source line, which tells the user nothing.
        return std::unexpected(cannotLoad);
    }
    return OpenCvModel(std::move(net));
}

std::expected<std::span<const NeuralOutput>, std::string> OpenCvModel::run(
    std::span<const Input> inputs) {
    try {
        for (const Input& input : inputs) {
            const std::array shape{1, 3, input.height, input.width};
            if (input.width <= 0 || input.height <= 0 ||
                input.planes.size() != static_cast<std::size_t>(input.width) *
                                           static_cast<std::size_t>(input.height) * 3) {
                return std::unexpected(cannotRun);
            }
            net_->net.setInput(cv::Mat(4, shape.data(), CV_32F,
                                       const_cast<float*>(input.planes.data())),  // NOLINT
                               input.name);
        }
        std::vector<cv::Mat>& mats = net_->mats;
        net_->net.forward(mats, net_->outputNames);
        for (std::size_t i = 0; i < mats.size(); ++i) {
            const cv::Mat values = mats[i].isContinuous() ? mats[i] : mats[i].clone();
            if (values.type() != CV_32F) return std::unexpected(cannotRun);
            const auto* first = values.ptr<float>();
            net_->outputs[i].values.assign(first, first + values.total());
        }
        return net_->outputs;
    } catch (const std::exception&) {
        return std::unexpected(cannotRun);
    }
}

void fillPlanes(OpenCvModel::Input& input, const cv::Mat& bgr, NeuralModels::ChannelOrder order) {
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

bool fillInput(OpenCvModel::Input& input, const Bitmap& image, NeuralModels::ChannelOrder order) {
    try {
        const auto bgr = bgrMat(image);
        if (bgr) fillPlanes(input, *bgr, order);
        return bgr.has_value();
    } catch (const cv::Exception&) {
        return false;
    }
}

}  // namespace marrowby
