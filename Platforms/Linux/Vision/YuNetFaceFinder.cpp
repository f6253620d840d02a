// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/YuNetFaceFinder.h"

#include "Platforms/Linux/Vision/OnnxModel.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <optional>
#include <span>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

constexpr double scoreThreshold = 0.6;
constexpr double overlapThreshold = 0.3;
constexpr int longestSearched = 320;
/// Stride of the coarsest grid; input sides are multiples of it.
constexpr int multiple = 32;

using Face = YuNetFaceFinder::Face;
using Values = std::vector<float>;
const Values none;

int paddedTo(int side) {
    return (side + multiple - 1) / multiple * multiple;
}

double clamped(float value) {
    // NaN becomes 0.
    return value > 0 ? std::min(double{value}, 1.0) : 0;
}

/// Decodes one grid as in the model's reference implementation.
void decode(const Values& cls, const Values& obj, const Values& box, const Values& points,
            int stride, int columns, std::vector<Face>& faces) {
    const double cell = stride;
    for (std::size_t i = 0; i < cls.size(); ++i) {
        const double score = std::sqrt(clamped(cls[i]) * clamped(obj[i]));
        if (score < scoreThreshold) continue;
        const auto [quotient, remainder] = std::div(static_cast<int>(i), columns);
        const double column = remainder;
        const double row = quotient;
        const float* b = &box[i * 4];
        const Point centre{(column + b[0]) * cell, (row + b[1]) * cell};
        const double width = std::exp(double{b[2]}) * cell;
        const double height = std::exp(double{b[3]}) * cell;
        if (!std::isfinite(centre.x + centre.y + width + height)) continue;

        Face face{.box = {centre.x - width / 2, centre.y - height / 2, width, height},
                  .points = {},
                  .score = score};
        for (std::size_t j = 0; j < face.points.size(); ++j) {
            const float* k = &points[i * 10 + 2 * j];
            face.points[j] = {(column + k[0]) * cell, (row + k[1]) * cell};
        }
        faces.push_back(face);
    }
}

/// Non-maximum suppression.
std::vector<Face> distinct(std::vector<Face> faces) {
    std::ranges::sort(faces, std::ranges::greater{}, &Face::score);
    std::vector<Face> kept;
    for (const Face& face : faces) {
        const bool overlaps = std::ranges::any_of(kept, [&](const Face& other) {
            const double common = intersection(face.box, other.box).area();
            return common > overlapThreshold * (face.box.area() + other.box.area() - common);
        });
        if (!overlaps) kept.push_back(face);
    }
    return kept;
}

void scale(Face& face, double x, double y) {
    face.box = {face.box.x * x, face.box.y * y, face.box.width * x, face.box.height * y};
    for (Point& point : face.points)
        point = {point.x * x, point.y * y};
}

}  // namespace

std::expected<YuNetFaceFinder, std::string> YuNetFaceFinder::load(const OnnxSource& from) {
    const auto file = OnnxFile::read(from);
    if (!file) return std::unexpected(file.error());
    for (const char* name : {"cls_8", "obj_8", "bbox_8", "kps_8", "cls_16", "obj_16", "bbox_16",
                             "kps_16", "cls_32", "obj_32", "bbox_32", "kps_32"}) {
        if (std::ranges::find(file->outputs, name, &OnnxFile::Value::name) == file->outputs.end()) {
            return std::unexpected(translated("The model “{file}” is no YuNet face detector.",
                                              {{"file", from.path.filename().string()}}));
        }
    }
    auto model = OnnxModel::load(*file);
    if (!model) return std::unexpected(model.error());
    YuNetFaceFinder finder(*std::move(model));
    // Warm-up at a usual size: the first run takes several times as long.
    try {
        if (auto found = finder.find(cv::Mat::zeros(240, longestSearched, CV_8UC3)); !found) {
            return std::unexpected(found.error());
        }
    } catch (const cv::Exception&) {
        return std::unexpected(translated("The face detector can’t be run."));
    }
    return finder;
}

std::expected<std::vector<Face>, std::string> YuNetFaceFinder::find(const cv::Mat& bgr) {
    cv::Mat searched = bgr;
    const int longSide = std::max(bgr.cols, bgr.rows);
    if (longSide > longestSearched) {
        const double shrink = double{longestSearched} / longSide;
        cv::resize(
            bgr, searched,
            {std::max(1, cvRound(bgr.cols * shrink)), std::max(1, cvRound(bgr.rows * shrink))}, 0,
            0, cv::INTER_AREA);
    }
    const int width = paddedTo(searched.cols);
    const int height = paddedTo(searched.rows);
    const double scaleX = double(bgr.cols) / searched.cols;
    const double scaleY = double(bgr.rows) / searched.rows;
    cv::Mat padded;
    cv::copyMakeBorder(searched, padded, 0, height - searched.rows, 0, width - searched.cols,
                       cv::BORDER_CONSTANT, cv::Scalar());

    fillPlanes(input_, padded, NeuralModels::ChannelOrder::bgr);
    const auto outputs = model_.run(std::span(&input_, 1));
    if (!outputs) return std::unexpected(outputs.error());
    const auto values = [&](const char* name, int stride) -> const Values& {
        const auto found =
            std::ranges::find(*outputs, name + std::to_string(stride), &NeuralOutput::name);
        return found == outputs->end() ? none : found->values;
    };

    std::vector<Face> faces;
    for (const int stride : {8, 16, 32}) {
        const Values& cls = values("cls_", stride);
        const Values& obj = values("obj_", stride);
        const Values& box = values("bbox_", stride);
        const Values& points = values("kps_", stride);
        const auto cells =
            static_cast<std::size_t>(width / stride) * static_cast<std::size_t>(height / stride);
        if (cls.size() != cells || obj.size() != cells || box.size() != cells * 4 ||
            points.size() != cells * 10) {
            return std::unexpected(translated("The face detector gave something unexpected."));
        }
        decode(cls, obj, box, points, stride, width / stride, faces);
    }
    faces = distinct(std::move(faces));
    for (Face& face : faces)
        scale(face, scaleX, scaleY);
    return faces;
}

}  // namespace marrowby
