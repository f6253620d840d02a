// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Simulation/People/LinearImage.h"
#include "Simulation/Scenes/Optics.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace marrowby {

/// How a camera sets its exposure: from brightness to shutter and gain. A value.
class Exposure {
  public:
    /// Starts wrong by a factor that depends on the seed.
    void begin(std::uint64_t seed);
    /// Moves towards what a picture of this mean brightness needs.
    void follow(float meanBrightness, TimeInterval passed, TimeInterval frameTime);

    /// The total amplification of light.
    [[nodiscard]] float factor() const { return factor_; }
    [[nodiscard]] TimeInterval open() const { return open_; }
    /// The amplifier's part, which also amplifies noise.
    [[nodiscard]] float gain() const;

  private:
    float factor_ = 1;
    TimeInterval open_{0.01};
    TimeInterval longest_{1.0 / 30};
};

/// Turns light into a camera's 8-bit picture: Bayer mosaic, shot and read noise, clipping,
/// demosaicing, sharpening, the curve of sRGB. One thread at a time.
class Sensor {
  public:
    explicit Sensor(std::uint64_t seed);

    /// `rowLight` is what each row's light is multiplied by; empty for 1.
    [[nodiscard]] std::shared_ptr<const PixelBuffer> develop(const LinearImage& image,
                                                             const Exposure& exposure,
                                                             const std::vector<float>& rowLight);

  private:
    void expose(const LinearImage& image, const Exposure& exposure,
                const std::vector<float>& rowLight);
    void demosaic(int width, int height);

    std::uint64_t seed_;
    std::uint64_t picture_ = 0;
    /// Normally distributed numbers.
    std::vector<float> noise_;
    /// One number per pixel: the colour that its filter lets through.
    std::vector<float> mosaic_;
    std::vector<float> green_;
    /// In the curve of sRGB, 0…255.
    std::vector<float> red8_;
    std::vector<float> green8_;
    std::vector<float> blue8_;
    /// From linear light to that curve.
    std::vector<float> curve_;
};

/// What the camera's meter reads: the mean brightness, the middle counting most.
[[nodiscard]] float meteredBrightness(const LinearImage& image);

}  // namespace marrowby
