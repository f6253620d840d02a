// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/Landmarks98Model.h"

#include "Platforms/Linux/Vision/OnnxModel.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Platform/WorkQueues.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

constexpr int inputSide = 112;

/// Cuts out a square at the model's input size, black beyond the picture's edges.
cv::Mat cut(const cv::Mat& bgr, const Rect& square) {
    const double scale = inputSide / square.width;
    const cv::Rect asked(cvFloor(square.x), cvFloor(square.y), cvCeil(square.width) + 1,
                         cvCeil(square.height) + 1);
    const cv::Rect part = asked & cv::Rect(0, 0, bgr.cols, bgr.rows);
    cv::Mat result(inputSide, inputSide, CV_8UC3, cv::Scalar());
    if (part.empty()) return result;
    cv::Mat source = bgr(part);
    double shrink = 1;
    if (scale < 0.75) {
        cv::Mat shrunk;
        const cv::Size size(std::max(1, cvRound(source.cols * scale)),
                            std::max(1, cvRound(source.rows * scale)));
        shrink = double(size.width) / source.cols;
        cv::resize(source, shrunk, size, 0, 0, cv::INTER_AREA);
        source = shrunk;
    }
    // Sampling offset between the centres of the source's and the square's first pixels.
    const double rest = scale / shrink;
    const double x = (part.x - square.x) * scale + 0.5 * rest - 0.5;
    const double y = (part.y - square.y) * scale + 0.5 * rest - 0.5;
    cv::warpAffine(source, result, cv::Matx23d(rest, 0, x, 0, rest, y), result.size(),
                   cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    return result;
}

/// The index of the landmark's mirror image.
std::size_t mirrorImage(std::size_t index) {
    // In each range, an index and its partner's add up to a constant.
    struct Range {
        std::size_t last;
        std::size_t sum;
    };
    constexpr std::array ranges{
        Range{32, 32},  Range{37, 79},           Range{41, 88},  Range{46, 79},
        Range{50, 88},  Range{54, /*itself*/ 0}, Range{59, 114}, Range{64, 132},
        Range{67, 140}, Range{72, 132},          Range{75, 140}, Range{82, 158},
        Range{87, 170}, Range{92, 180},          Range{95, 188}, Range{97, 193}};
    const auto range =
        std::ranges::find_if(ranges, [&](const Range& r) { return index <= r.last; });
    return range == ranges.end() || range->sum == 0 ? index : range->sum - index;
}

}  // namespace

std::expected<Landmarks98Model, std::string> Landmarks98Model::load(const OnnxSource& from) {
    const auto file = OnnxFile::read(from);
    if (!file) return std::unexpected(file.error());
    if (file->inputs.size() != 1 || file->inputs[0].name != "image" ||
        std::ranges::find(file->outputs, "landmarks", &OnnxFile::Value::name) ==
            file->outputs.end()) {
        return std::unexpected(translated("The model “{file}” is no finder of face landmarks.",
                                          {{"file", from.path.filename().string()}}));
    }
    auto straight = OnnxModel::load(*file);
    auto mirrored = OnnxModel::load(*file);
    if (!straight) return std::unexpected(straight.error());
    if (!mirrored) return std::unexpected(mirrored.error());
    Landmarks98Model model(*std::move(straight), *std::move(mirrored));
    // Warm-up: the first run takes several times as long.
    try {
        const auto found =
            model.find(cv::Mat::zeros(inputSide, inputSide, CV_8UC3), {0, 0, inputSide, inputSide});
        if (!found) return std::unexpected(found.error());
    } catch (const cv::Exception&) {
        return std::unexpected(translated("The finder of face landmarks can’t be run."));
    }
    return model;
}

std::expected<Landmarks98, std::string> Landmarks98Model::find(const cv::Mat& bgr, const Rect& box,
                                                               WorkQueue* helper) {
    const double length = std::max(box.width, box.height);
    const Point centre = box.centre();
    const Rect square{centre.x - length / 2, centre.y - length / 2, length, length};
    const cv::Mat crop = cut(bgr, square);
    cv::Mat mirrored;
    cv::flip(crop, mirrored, 1);
    std::expected<Landmarks98, std::string> seen;
    std::expected<Landmarks98, std::string> seenMirrored;
    const auto lookStraight = [&] { seen = straight_.run(crop); };
    const auto lookMirrored = [&] { seenMirrored = mirrored_.run(mirrored); };
    if (helper) {
        runInParallel(*helper, lookMirrored, lookStraight);
    } else {
        lookStraight();
        lookMirrored();
    }
    if (!seen) return seen;
    if (!seenMirrored) return seenMirrored;

    Landmarks98 points;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point& one = (*seen)[i];
        const Point& other = (*seenMirrored)[mirrorImage(i)];
        points[i] = {square.x + length * (one.x + 1 - other.x) / 2,
                     square.y + length * (one.y + other.y) / 2};
    }
    return points;
}

std::expected<Landmarks98, std::string> Landmarks98Model::View::run(const cv::Mat& crop) {
    fillPlanes(input, crop, NeuralModels::ChannelOrder::bgr);
    const auto outputs = model.run(std::span(&input, 1));
    if (!outputs) return std::unexpected(outputs.error());
    Landmarks98 points;
    const auto found = std::ranges::find(*outputs, "landmarks", &NeuralOutput::name);
    if (found == outputs->end() || found->values.size() != points.size() * 2 ||
        !std::ranges::all_of(found->values, [](float value) { return std::isfinite(value); })) {
        return std::unexpected(
            translated("The finder of face landmarks gave something unexpected."));
    }
    for (std::size_t i = 0; i < points.size(); ++i) {
        points[i] = {found->values[2 * i], found->values[2 * i + 1]};
    }
    return points;
}

}  // namespace marrowby
