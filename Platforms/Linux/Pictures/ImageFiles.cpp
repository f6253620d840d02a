// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Pictures/ImageFiles.h"

#include <cstdint>
#include <system_error>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

std::unexpected<std::string> unreadable(const std::filesystem::path& file, const char* why) {
    return std::unexpected("The picture “" + file.filename().string() + "” " + why);
}

}  // namespace

std::expected<std::shared_ptr<const PixelBuffer>, std::string> readPicture(
    const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(file, error)) {
        return unreadable(file, "isn’t there.");
    }
    try {
        const cv::Mat picture = cv::imread(file.string(), cv::IMREAD_COLOR);
        if (picture.empty()) return unreadable(file, "couldn’t be read: it is no picture.");
        std::vector<std::uint8_t> bytes(picture.total() * 4);
        cv::Mat bgra(picture.rows, picture.cols, CV_8UC4, bytes.data());
        cv::cvtColor(picture, bgra, cv::COLOR_BGR2BGRA);
        auto buffer =
            PixelBuffer::create(picture.cols, picture.rows,
                                static_cast<std::size_t>(picture.cols) * 4, std::move(bytes));
        if (!buffer) return unreadable(file, "couldn’t be read: it is empty.");
        return buffer;
    } catch (const cv::Exception&) {
        return unreadable(file, "couldn’t be read: it is damaged or too large.");
    }
}

std::expected<void, std::string> writePicture(const std::filesystem::path& file,
                                              const PixelBuffer& picture) {
    // Only read: OpenCV has no const Mat.
    const cv::Mat bgra(picture.height(), picture.width(), CV_8UC4,
                       const_cast<std::uint8_t*>(picture.bytes().data()), picture.bytesPerRow());
    const auto failure = unreadable(file, "couldn’t be written.");
    try {
        cv::Mat bgr;
        cv::cvtColor(bgra, bgr, cv::COLOR_BGRA2BGR);
        if (!cv::imwrite(file.string(), bgr)) return failure;
        return {};
    } catch (const cv::Exception&) {
        return failure;
    }
}

}  // namespace marrowby
