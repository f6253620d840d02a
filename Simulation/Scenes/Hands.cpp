// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Hands.h"

#include "Simulation/Scenes/Chance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace marrowby {

namespace {

/// Wider than this, it takes two hands.
constexpr float handSpan = 0.10F;

/// A strip of this size about a place on the sheet, `nearer` to the viewer and turned about the
/// line of sight.
HandPart part(const PlacedSheet& placed, const Placement& place, float u, float v, float nearer,
              float width, float height, float turn) {
    HandPart result{.sheet = {.width = width,
                              .height = height,
                              .cornerRadius = width / 2,
                              .gloss = 0.01F,
                              .roughness = 0.4F},
                    .place = place};
    result.place.position = placed.at(u, v) - axes(place)[2] * nearer;
    result.place.roll += turn;
    return result;
}

}  // namespace

std::vector<HandPart> armsBehind(const PlacedSheet& placed, const Placement& place) {
    const Sheet& sheet = placed.sheet();
    const float low = sheet.height / 2;
    if (sheet.width < handSpan) {
        return {part(placed, place, sheet.width * 0.15F, low + 0.10F, -0.015F, 0.070F, 0.30F, 0),
                part(placed, place, sheet.width * 0.12F, low - 0.02F, -0.012F, 0.080F, 0.10F, 0)};
    }
    std::vector<HandPart> parts;
    for (const float side : {-1.0F, 1.0F}) {
        parts.push_back(part(placed, place, side * (sheet.width / 2 + 0.03F), low + 0.06F, -0.010F,
                             0.065F, 0.30F, side * 0.25F));
    }
    return parts;
}

std::vector<HandPart> fingersBefore(const PlacedSheet& placed, const Placement& place) {
    const Sheet& sheet = placed.sheet();
    const float edge = sheet.width / 2;
    if (sheet.width >= handSpan) {
        const float v = sheet.height / 2 - 0.05F;
        return {part(placed, place, -edge - 0.004F, v, 0.005F, 0.020F, 0.06F, -0.9F),
                part(placed, place, edge + 0.004F, v, 0.005F, 0.020F, 0.06F, 0.9F)};
    }
    std::vector<HandPart> parts{
        part(placed, place, edge + 0.004F, sheet.height * 0.25F, 0.006F, 0.019F, 0.055F, 0.6F)};
    for (const float v : {0.004F, 0.024F, 0.043F}) {
        parts.push_back(part(placed, place, -edge - 0.001F, v, 0.004F, 0.015F, 0.022F, 1.5F));
    }
    return parts;
}

Texture skin(std::uint64_t seed) {
    constexpr std::array tones{Vector3{0.55F, 0.33F, 0.23F}, Vector3{0.42F, 0.24F, 0.16F},
                               Vector3{0.20F, 0.11F, 0.07F}};
    Chance chance(seed);
    const Vector3 tone = tones.at(chance.next() % tones.size());
    // High enough for the longest part: a picture is never squeezed.
    LinearImage image(16, 80);
    std::ranges::fill(image.coverage, 1.0F);
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            // Round: darker where it turns away.
            const float across = (static_cast<float>(x) + 0.5F) / 8 - 1;
            const Vector3 colour = tone * (0.4F + 0.6F * std::sqrt(1 - across * across));
            float* pixel = image.pixel(x, y);
            pixel[0] = colour.x;
            pixel[1] = colour.y;
            pixel[2] = colour.z;
        }
    }
    return Texture(std::move(image));
}

}  // namespace marrowby
