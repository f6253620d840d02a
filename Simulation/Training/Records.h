// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace marrowby {

/// Training pictures, as `pictures.py` reads them: records of one size after another, each some
/// 32-bit floats and then bytes.
namespace records {

/// Somebody's face, upright or not, in the middle of a square.
struct Face {
    static constexpr int side = 160;
    static constexpr std::size_t numberCount = 256;
    static constexpr std::size_t byteCount = std::size_t{side} * side * 3;
    /// The person's seed less the first of all; left, top, width and height of the box; yaw, pitch
    /// and roll in radians; the 98 points. Pixels.
    std::array<float, numberCount> numbers{};
    /// Blue, green, red.
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(byteCount);
};

/// A whole picture and, of its largest face, the real-face model's input.
struct Scene {
    static constexpr int width = 320;
    static constexpr int height = 240;
    static constexpr int cropSide = 80;
    static constexpr std::size_t mostFaces = 3;
    /// Of one face: left, top, width, height; 5 points; what it is; 1 if it needs not be found.
    static constexpr std::size_t faceNumbers = 16;
    static constexpr std::size_t numberCount = 64;
    static constexpr std::size_t cropBytes = std::size_t{cropSide} * cropSide * 3;
    /// Two boxes as a finder might give them, of each both crops.
    static constexpr std::size_t cropCount = 4;
    static constexpr std::size_t pictureBytes = std::size_t{width} * height * 3;
    /// How many faces; the class of the crops, -1 where there are none: 0 paper, 1 live, 2 screen;
    /// the kind of attack, -1 for none; the light; then from 16 on the faces.
    std::array<float, numberCount> numbers{};
    std::vector<std::uint8_t> bytes =
        std::vector<std::uint8_t>(pictureBytes + cropCount * cropBytes);
};

}  // namespace records

/// Writes records into a file that appears when complete.
template <typename Record>
class RecordFile {
  public:
    explicit RecordFile(std::filesystem::path path) : path_(std::move(path)) {}

    void add(const Record& record) {
        const auto numbers = std::as_bytes(std::span(record.numbers));
        const auto bytes = std::as_bytes(std::span(record.bytes));
        content_.insert(content_.end(), numbers.begin(), numbers.end());
        content_.insert(content_.end(), bytes.begin(), bytes.end());
    }
    /// The error is a sentence for the user.
    [[nodiscard]] std::expected<void, std::string> finish() const;

  private:
    std::filesystem::path path_;
    std::vector<std::byte> content_;
};

}  // namespace marrowby
