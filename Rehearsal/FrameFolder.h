#pragma once

#include "Platforms/Linux/PixelBuffer.h"

#include <cstddef>
#include <expected>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// A recorded or rendered sequence of pictures: a folder of `0000.jpg`, `0001.jpg`, ... and a
/// `truth.json`, an object with "fps" and "frames", a list of one object per picture. The pictures
/// stay on disk. Immutable; any thread may read it.
class FrameFolder {
  public:
    /// What is known about one picture, each where it is told.
    struct Truth {
        /// Radians: yaw positive to the person's left, pitch negative up.
        std::optional<double> yaw;
        std::optional<double> pitch;
        /// The stored name of an enrolment pose.
        std::optional<std::string> pose;
        friend bool operator==(const Truth&, const Truth&) = default;
    };

    /// The error is one sentence that names what is missing or wrong.
    [[nodiscard]] static std::expected<FrameFolder, std::string> load(
        const std::filesystem::path& folder);

    /// Of every picture, as the first one has it.
    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] double framesPerSecond() const { return framesPerSecond_; }
    /// One per picture, never empty.
    [[nodiscard]] const std::vector<Truth>& frames() const { return frames_; }

    /// The first unbroken run of pictures in this pose.
    [[nodiscard]] std::optional<FrameFolder> inPose(std::string_view pose) const;

    /// Reads and decodes one picture. The error is one sentence that names it.
    [[nodiscard]] std::expected<std::shared_ptr<const PixelBuffer>, std::string> picture(
        std::size_t index) const;

  private:
    FrameFolder() = default;

    std::filesystem::path folder_;
    std::size_t firstPicture_ = 0;
    int width_ = 0;
    int height_ = 0;
    double framesPerSecond_ = 0;
    std::vector<Truth> frames_;
};

}  // namespace marrowby
