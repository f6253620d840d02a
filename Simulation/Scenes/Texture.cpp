// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Texture.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace marrowby {

namespace {

LinearImage halved(const LinearImage& image) {
    LinearImage half(std::max(image.width / 2, 1), std::max(image.height / 2, 1));
    for (int y = 0; y < half.height; ++y) {
        for (int x = 0; x < half.width; ++x) {
            float* to = half.pixel(x, y);
            float coverage = 0;
            for (int i = 0; i < 4; ++i) {
                const int fromX = std::min(2 * x + i % 2, image.width - 1);
                const int fromY = std::min(2 * y + i / 2, image.height - 1);
                const float* from = image.pixel(fromX, fromY);
                for (int c = 0; c < 3; ++c)
                    to[c] += from[c] / 4;
                coverage += image.coverage[image.index(fromX, fromY)] / 4;
            }
            half.coverage[half.index(x, y)] = coverage;
        }
    }
    return half;
}

Texture::Sample bilinear(const LinearImage& image, float x, float y) {
    const float left = std::clamp(x - 0.5F, 0.0F, static_cast<float>(image.width - 1));
    const float top = std::clamp(y - 0.5F, 0.0F, static_cast<float>(image.height - 1));
    const int x0 = static_cast<int>(left);
    const int y0 = static_cast<int>(top);
    const int x1 = std::min(x0 + 1, image.width - 1);
    const int y1 = std::min(y0 + 1, image.height - 1);
    const float fx = left - static_cast<float>(x0);
    const float fy = top - static_cast<float>(y0);
    const std::size_t a = image.index(x0, y0);
    const std::size_t b = image.index(x1, y0);
    const std::size_t c = image.index(x0, y1);
    const std::size_t d = image.index(x1, y1);
    const float wa = (1 - fx) * (1 - fy);
    const float wb = fx * (1 - fy);
    const float wc = (1 - fx) * fy;
    const float wd = fx * fy;
    const float* rgb = image.rgb.data();
    const auto channel = [&](std::size_t i) {
        return wa * rgb[a * 3 + i] + wb * rgb[b * 3 + i] + wc * rgb[c * 3 + i] +
               wd * rgb[d * 3 + i];
    };
    return {.colour = {channel(0), channel(1), channel(2)},
            .coverage = wa * image.coverage[a] + wb * image.coverage[b] + wc * image.coverage[c] +
                        wd * image.coverage[d]};
}

}  // namespace

Texture::Texture(LinearImage image) {
    levels_.push_back(std::move(image));
    while (std::min(levels_.back().width, levels_.back().height) > 8) {
        levels_.push_back(halved(levels_.back()));
    }
}

Texture::Detail Texture::detail(float footprint) const {
    const float wanted = std::clamp(std::log2(std::max(footprint, 1e-3F)), 0.0F,
                                    static_cast<float>(levels_.size() - 1));
    const auto level = static_cast<std::size_t>(wanted);
    return {.level = level, .rest = wanted - static_cast<float>(level)};
}

Texture::Sample Texture::at(float x, float y, const Detail& detail) const {
    float scale = 1 / static_cast<float>(std::size_t{1} << detail.level);
    const Sample fine = bilinear(levels_[detail.level], x * scale, y * scale);
    if (detail.rest < 0.02F || detail.level + 1 >= levels_.size()) return fine;
    scale /= 2;
    const Sample coarse = bilinear(levels_[detail.level + 1], x * scale, y * scale);
    return {.colour = mix(fine.colour, coarse.colour, detail.rest),
            .coverage = fine.coverage + (coarse.coverage - fine.coverage) * detail.rest};
}

}  // namespace marrowby
