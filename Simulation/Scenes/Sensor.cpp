// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Sensor.h"

#include "Simulation/Scenes/Chance.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>

namespace marrowby {

namespace {

/// A small webcam's sensor: the electrons that fill a pixel, and those that reading it adds or
/// takes.
constexpr float fullWell = 6000;
constexpr float readNoise = 4;

constexpr float wantedBrightness = 0.26F;
constexpr float highestGain = 12;
constexpr TimeInterval usualOpening{0.01};
constexpr TimeInterval settling{0.22};

constexpr std::size_t noiseCount = std::size_t{1} << 16U;
constexpr std::size_t curveSteps = 4096;
constexpr float sharpening = 0.45F;
/// Added before a positive number is truncated; std::lround is a call.
constexpr float toNearest = 0.5F;

float encoded(float linear) {
    return linear <= 0.0031308F ? 12.92F * linear : 1.055F * std::pow(linear, 1 / 2.4F) - 0.055F;
}

}  // namespace

void Exposure::begin(std::uint64_t seed) {
    Chance chance(seed);
    const double wrong = chance.between(0.8, 1.4);
    factor_ = static_cast<float>(chance.between(0, 1) < 0.5 ? std::exp2(wrong) : std::exp2(-wrong));
}

void Exposure::follow(float meanBrightness, TimeInterval passed, TimeInterval frameTime) {
    longest_ = std::min(frameTime, TimeInterval(1.0 / 30));
    const auto most = static_cast<float>(highestGain * (longest_ / usualOpening));
    const float wanted =
        std::clamp(wantedBrightness / std::max(meanBrightness, 1e-6F), 0.02F, most);
    if (passed <= TimeInterval(0)) {
        // Off by the factor of begin().
        factor_ = std::min(factor_ * wanted, most);
    } else {
        const auto part = static_cast<float>(1 - std::exp(-(passed / settling)));
        factor_ *= std::pow(wanted / factor_, part);
    }
    // Exposure time first, then gain.
    open_ = std::clamp(usualOpening * factor_, TimeInterval(1.0 / 4000), longest_);
}

float Exposure::gain() const {
    return std::max(factor_ * static_cast<float>(usualOpening / open_), 1.0F);
}

float meteredBrightness(const LinearImage& image) {
    double sum = 0;
    double weights = 0;
    for (int y = 0; y < image.height; y += 4) {
        const double down = std::abs(2.0 * y / image.height - 1);
        for (int x = 0; x < image.width; x += 4) {
            const double across = std::abs(2.0 * x / image.width - 1);
            const double weight = 1.3 - std::max(across, down);
            const float* p = image.pixel(x, y);
            // Clipped light counts as full scale.
            const double light = std::min(0.21 * p[0] + 0.72 * p[1] + 0.07 * p[2], 4.0);
            sum += weight * light;
            weights += weight;
        }
    }
    return static_cast<float>(sum / weights);
}

Sensor::Sensor(std::uint64_t seed) : seed_(seed), noise_(noiseCount), curve_(curveSteps + 1) {
    Chance chance(seed);
    for (std::size_t i = 0; i < noiseCount; i += 2) {
        const double radius = std::sqrt(-2 * std::log(chance.between(1e-12, 1)));
        const double angle = chance.between(0, 2 * std::numbers::pi);
        noise_[i] = static_cast<float>(radius * std::cos(angle));
        noise_[i + 1] = static_cast<float>(radius * std::sin(angle));
    }
    for (std::size_t i = 0; i <= curveSteps; ++i) {
        curve_[i] = 255 * encoded(static_cast<float>(i) / static_cast<float>(curveSteps));
    }
}

// Red on even columns of even rows, blue on odd columns of odd rows, green elsewhere. Each sees a
// little of the light around it: the lens and the filter before the sensor.
void Sensor::expose(const LinearImage& image, const Exposure& exposure,
                    const std::vector<float>& rowLight) {
    const int width = image.width;
    const int height = image.height;
    const float perElectron = exposure.gain() / fullWell;
    const float readVariance = (readNoise * perElectron) * (readNoise * perElectron);
    Chance chance(seed_ + ++picture_);
    constexpr float own = 0.60F;
    constexpr float next = (1 - own) / 4;
    for (int y = 0; y < height; ++y) {
        const int above = std::max(y - 1, 0);
        const int below = std::min(y + 1, height - 1);
        const float factor =
            exposure.factor() * (rowLight.empty() ? 1 : rowLight[static_cast<std::size_t>(y)]);
        const std::uint64_t random = chance.next();
        const std::size_t offset = random % noiseCount;
        const std::size_t stride = 1 + 2 * ((random >> 32U) % 1024);
        float* row = &mosaic_[image.index(0, y)];
        for (int x = 0; x < width; ++x) {
            const int channel = y % 2 == 0 ? (x % 2 == 0 ? 0 : 1) : (x % 2 == 0 ? 1 : 2);
            const int before = std::max(x - 1, 0);
            const int after = std::min(x + 1, width - 1);
            const float light =
                own * image.pixel(x, y)[channel] +
                next * (image.pixel(before, y)[channel] + image.pixel(after, y)[channel] +
                        image.pixel(x, above)[channel] + image.pixel(x, below)[channel]);
            const float value = std::max(light * factor, 0.0F);
            const float deviation = std::sqrt(value * perElectron + readVariance);
            const float random01 =
                noise_[(offset + static_cast<std::size_t>(x) * stride) % noiseCount];
            row[x] = std::clamp(value + deviation * random01, 0.0F, 1.0F);
        }
    }
}

// Green first; red and blue by their difference from it, which changes slowly.
void Sensor::demosaic(int width, int height) {
    const auto at = [width](int x, int y) {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
               static_cast<std::size_t>(x);
    };
    // One beyond the edge is two before: the same colour of filter.
    const auto mirrored = [](int i, int count) {
        return i < 0 ? -i : (i >= count ? 2 * count - 2 - i : i);
    };
    for (int y = 0; y < height; ++y) {
        const int above = mirrored(y - 1, height);
        const int below = mirrored(y + 1, height);
        for (int x = 0; x < width; ++x) {
            const std::size_t here = at(x, y);
            if ((x + y) % 2 == 1) {
                green_[here] = mosaic_[here];
                continue;
            }
            const float left = mosaic_[at(mirrored(x - 1, width), y)];
            const float right = mosaic_[at(mirrored(x + 1, width), y)];
            const float top = mosaic_[at(x, above)];
            const float bottom = mosaic_[at(x, below)];
            const float across = std::abs(left - right) + 0.01F;
            const float down = std::abs(top - bottom) + 0.01F;
            // Along the edge rather than over it.
            green_[here] =
                ((left + right) * down + (top + bottom) * across) / (2 * (across + down));
        }
    }
    const auto look = [this](float value) {
        return curve_[static_cast<std::size_t>(
            std::clamp(value, 0.0F, 1.0F) * static_cast<float>(curveSteps) + toNearest)];
    };
    for (int y = 0; y < height; ++y) {
        const int above = mirrored(y - 1, height);
        const int below = mirrored(y + 1, height);
        for (int x = 0; x < width; ++x) {
            const int before = mirrored(x - 1, width);
            const int after = mirrored(x + 1, width);
            const auto difference = [&](int fromX, int fromY) {
                const std::size_t i = at(fromX, fromY);
                return mosaic_[i] - green_[i];
            };
            const std::size_t here = at(x, y);
            const float beside = (difference(before, y) + difference(after, y)) / 2;
            const float over = (difference(x, above) + difference(x, below)) / 2;
            float red = 0;
            float blue = 0;
            if ((x + y) % 2 == 1) {
                red = y % 2 == 0 ? beside : over;
                blue = y % 2 == 0 ? over : beside;
            } else {
                const float corners = (difference(before, above) + difference(after, above) +
                                       difference(before, below) + difference(after, below)) /
                                      4;
                red = y % 2 == 0 ? difference(x, y) : corners;
                blue = y % 2 == 0 ? corners : difference(x, y);
            }
            red8_[here] = look(green_[here] + red);
            green8_[here] = look(green_[here]);
            blue8_[here] = look(green_[here] + blue);
        }
    }
}

std::shared_ptr<const PixelBuffer> Sensor::develop(const LinearImage& image,
                                                   const Exposure& exposure,
                                                   const std::vector<float>& rowLight) {
    const std::size_t count = image.coverage.size();
    for (auto* plane : {&mosaic_, &green_, &red8_, &green8_, &blue8_})
        plane->resize(count);
    expose(image, exposure, rowLight);
    demosaic(image.width, image.height);

    const int width = image.width;
    const int height = image.height;
    std::vector<std::uint8_t> bytes(count * 4);
    for (int y = 0; y < height; ++y) {
        const std::size_t here = image.index(0, y);
        const std::size_t above = image.index(0, std::max(y - 1, 0));
        const std::size_t below = image.index(0, std::min(y + 1, height - 1));
        for (std::size_t x = 0; x < static_cast<std::size_t>(width); ++x) {
            const std::size_t before = x > 0 ? x - 1 : 0;
            const std::size_t after = std::min(x + 1, static_cast<std::size_t>(width) - 1);
            // By brightness, so that colours do not fringe.
            const auto around = green8_[here + before] + green8_[here + after] +
                                green8_[above + x] + green8_[below + x];
            const float more = sharpening * (green8_[here + x] - around / 4);
            const auto byte = [more](float value) {
                return static_cast<std::uint8_t>(std::clamp(value + more, 0.0F, 255.0F) +
                                                 toNearest);
            };
            std::uint8_t* to = &bytes[(here + x) * 4];
            to[0] = byte(blue8_[here + x]);
            to[1] = byte(green8_[here + x]);
            to[2] = byte(red8_[here + x]);
            to[3] = 255;
        }
    }
    return PixelBuffer::create(width, height, static_cast<std::size_t>(width) * 4,
                               std::move(bytes));
}

}  // namespace marrowby
