// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/MoireCueExtractor.h"

#include "UnlockCore/Liveness/ScreenCues.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace marrowby::moirecueextractor {

namespace {

constexpr int side = FourierTransform::side;
constexpr std::size_t count = FourierTransform::count;
constexpr int tilesPerSide = 3;
constexpr int smallestPatch = 96;
constexpr int largestPatch = 128;

/// The rings searched: inside them lies the face's own shape and light, outside the sensor's noise.
constexpr double innermost = 4;
constexpr double outermost = 29;
constexpr std::size_t ringCount = 30;
/// How far along its direction a peak's neighbours lie.
constexpr double neighbourStep = 2;
constexpr float leastNeighbour = 1e-6F;

constexpr float centre = (side - 1) / 2.0F;

/// The centred square that is analysed.
struct Patch {
    int side = 0;
    int left = 0;
    int top = 0;
};

std::optional<Patch> patch(int width, int height) {
    const int shortSide = std::min(width, height);
    // 0.6 of it, in whole numbers: no rounding at 160.
    const auto wanted = static_cast<int>(std::int64_t{shortSide} * 6 / 10);
    if (wanted < smallestPatch) return std::nullopt;
    const int length = std::min(wanted, largestPatch);
    return Patch{length, (width - length) / 2, (height - length) / 2};
}

/// A periodic Hann window.
const std::array<float, side>& window() {
    static const auto table = [] {
        std::array<float, side> values{};
        for (std::size_t i = 0; i < values.size(); ++i) {
            values[i] = static_cast<float>(
                0.5 - 0.5 * std::cos(2 * std::numbers::pi * static_cast<double>(i) / side));
        }
        return values;
    }();
    return table;
}

/// Where a bin lies and what it is compared with.
struct Bin {
    std::size_t index;
    std::size_t ring;
    std::size_t nearer;
    std::size_t further;
    /// In the half-plane that is searched; the other mirrors it.
    bool isCandidate;
};

std::size_t indexOf(int kx, int ky) {
    const auto wrapped = [](int k) { return static_cast<std::size_t>((k + side) % side); };
    return wrapped(ky) * FourierTransform::side + wrapped(kx);
}

const std::vector<Bin>& bins() {
    static const auto table = [] {
        std::vector<Bin> result;
        for (int ky = -side / 2; ky < side / 2; ++ky) {
            for (int kx = -side / 2; kx < side / 2; ++kx) {
                const double radius = std::hypot(kx, ky);
                if (radius < innermost || radius > outermost) continue;
                const auto along = [&](double distance) {
                    const auto part = [&](int k) {
                        return static_cast<int>(std::lround(k * distance / radius));
                    };
                    return indexOf(part(kx), part(ky));
                };
                result.push_back({.index = indexOf(kx, ky),
                                  .ring = static_cast<std::size_t>(std::lround(radius)),
                                  .nearer = along(radius - neighbourStep),
                                  .further = along(radius + neighbourStep),
                                  .isCandidate = ky > 0 || (ky == 0 && kx >= 1)});
            }
        }
        return result;
    }();
    return table;
}

/// One tile without its mean and slope, under the window.
void detrend(const float* tile, std::size_t stride, FourierTransform::Plane result) {
    // Σu² of one row: (n³ − n) / 12.
    constexpr float squares = (float{side} * side * side - side) / 12;
    float sum = 0;
    float acrossSum = 0;
    float downSum = 0;
    for (std::size_t row = 0; row < side; ++row) {
        const float* values = tile + row * stride;
        float rowSum = 0;
        float rowAcross = 0;
        for (std::size_t column = 0; column < side; ++column) {
            rowSum += values[column];
            rowAcross += (static_cast<float>(column) - centre) * values[column];
        }
        sum += rowSum;
        acrossSum += rowAcross;
        downSum += (static_cast<float>(row) - centre) * rowSum;
    }
    const float mean = sum / float{count};
    // Σu and Σv are 0, so the mean drops out of both slopes.
    const float across = acrossSum / (side * squares);
    const float down = downSum / (side * squares);

    const auto& weights = window();
    for (std::size_t row = 0; row < side; ++row) {
        const float* values = tile + row * stride;
        float* out = result.data() + row * side;
        const float base = mean + down * (static_cast<float>(row) - centre);
        for (std::size_t column = 0; column < side; ++column) {
            out[column] = weights[row] * weights[column] *
                          (values[column] - base - across * (static_cast<float>(column) - centre));
        }
    }
}

/// Of a square of luminances of this side.
std::optional<MoireSample> analyse(const std::vector<float>& luminance, int length,
                                   const FourierTransform& fourier) {
    std::vector<float> real(count);
    std::vector<float> imaginary(count);
    std::vector<float> power(count);
    const FourierTransform::Plane realPlane(real.data(), count);
    const FourierTransform::Plane imaginaryPlane(imaginary.data(), count);

    const auto stride = static_cast<std::size_t>(length);
    const auto step = static_cast<std::size_t>((length - side) / 2);
    for (std::size_t tile = 0; tile < std::size_t{tilesPerSide} * tilesPerSide; ++tile) {
        const std::size_t top = tile / tilesPerSide * step;
        const std::size_t left = tile % tilesPerSide * step;
        detrend(luminance.data() + top * stride + left, stride, realPlane);
        std::ranges::fill(imaginary, 0.0F);
        if (!fourier.forward(realPlane, imaginaryPlane)) return std::nullopt;
        for (std::size_t i = 0; i < count; ++i)
            power[i] += real[i] * real[i] + imaginary[i] * imaginary[i];
    }
    return MoireSample{
        .peakContrast = peakContrast(std::span<const float, count>(power.data(), count)),
        .patchSize = length};
}

/// `luminanceAt` gives the luminance of the pixel at a place of the whole plane.
template <typename LuminanceAt>
std::optional<MoireSample> analyseCentre(int width, int height, const FourierTransform& fourier,
                                         const LuminanceAt& luminanceAt) {
    const auto square = patch(width, height);
    if (!square) return std::nullopt;
    const auto length = static_cast<std::size_t>(square->side);
    std::vector<float> luminance(length * length);
    for (std::size_t row = 0; row < length; ++row) {
        const std::size_t first =
            (static_cast<std::size_t>(square->top) + row) * static_cast<std::size_t>(width) +
            static_cast<std::size_t>(square->left);
        for (std::size_t column = 0; column < length; ++column)
            luminance[row * length + column] = luminanceAt(first + column);
    }
    return analyse(luminance, square->side, fourier);
}

}  // namespace

std::optional<MoireSample> sample(std::span<const std::uint8_t> rgbx, int width, int height,
                                  const FourierTransform& fourier) {
    if (!coversPixels(rgbx, width, height)) return std::nullopt;
    return analyseCentre(width, height, fourier, [bytes = rgbx.data()](std::size_t place) {
        const std::uint8_t* pixel = bytes + place * 4;
        return 0.299F * static_cast<float>(pixel[0]) + 0.587F * static_cast<float>(pixel[1]) +
               0.114F * static_cast<float>(pixel[2]);
    });
}

std::optional<MoireSample> sample(std::span<const float> luminance, int width, int height,
                                  const FourierTransform& fourier) {
    if (width < 1 || height < 1 ||
        luminance.size() < static_cast<std::size_t>(width) * static_cast<std::size_t>(height)) {
        return std::nullopt;
    }
    return analyseCentre(width, height, fourier,
                         [&](std::size_t place) { return luminance[place]; });
}

float peakContrast(std::span<const float, FourierTransform::count> power) {
    // NaN cannot be sorted.
    if (!std::ranges::all_of(power, [](float value) { return std::isfinite(value); })) return 0;
    std::array<std::vector<float>, ringCount> rings;
    for (const Bin& bin : bins())
        rings[bin.ring].push_back(power[bin.index]);
    std::array<float, ringCount> backgrounds{};
    for (std::size_t i = 0; i < ringCount; ++i) {
        if (rings[i].empty()) continue;
        const auto middle = rings[i].begin() + static_cast<std::ptrdiff_t>(rings[i].size() / 2);
        std::ranges::nth_element(rings[i], middle);
        backgrounds[i] = *middle;
    }

    float strongest = 0;
    for (const Bin& bin : bins()) {
        const float background = backgrounds[bin.ring];
        if (!bin.isCandidate || !(background > 0)) continue;
        const float here = power[bin.index];
        const float neighbour = std::max({power[bin.nearer], power[bin.further], leastNeighbour});
        strongest = std::max(strongest, std::min(here / background, here / neighbour));
    }
    return strongest;
}

}  // namespace marrowby::moirecueextractor
