#include "Rehearsal/Scenes/Room.h"

#include "Rehearsal/Scenes/Chance.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace marrowby {

namespace {

/// Part of the wall, in tangents of the angle from the camera's axis.
struct Patch {
    float left = 0;
    float top = 0;
    float right = 0;
    float bottom = 0;
    Vector3 colour = {};
    bool shines = false;
};

Vector3 someColour(Chance& chance, double low, double high) {
    return {.x = static_cast<float>(chance.between(low, high)),
            .y = static_cast<float>(chance.between(low, high)),
            .z = static_cast<float>(chance.between(low, high))};
}

void addShelf(std::vector<Patch>& patches, Chance& chance) {
    constexpr Vector3 wood{.x = 0.30F, .y = 0.20F, .z = 0.12F};
    constexpr float left = 0.30F;
    constexpr float right = 0.80F;
    patches.push_back({left, -0.50F, right, 0.60F, wood * 0.5F});
    for (int board = 0; board < 5; ++board) {
        const float bottom = -0.28F + 0.2F * static_cast<float>(board);
        for (float x = left + 0.01F; x < right - 0.03F;) {
            const auto thickness = static_cast<float>(chance.between(0.015, 0.045));
            const auto size = static_cast<float>(chance.between(0.11, 0.17));
            if (chance.between(0, 1) < 0.85) {
                patches.push_back(
                    {x, bottom - size, x + thickness, bottom, someColour(chance, 0.03, 0.45)});
            }
            x += thickness + 0.002F;
        }
        patches.push_back({left, bottom, right, bottom + 0.018F, wood});
    }
}

std::vector<Patch> furniture(std::uint64_t seed, const SceneLight& light) {
    Chance chance(seed);
    const auto shift = static_cast<float>(chance.between(-0.08, 0.08));
    std::vector<Patch> patches;
    patches.push_back({-0.85F, -0.36F, -0.44F, 1, {0.50F, 0.47F, 0.42F}});
    patches.push_back({-0.83F, -0.34F, -0.46F, 1, {0.62F, 0.60F, 0.56F}});
    patches.push_back({-0.50F, 0.10F, -0.47F, 0.12F, {0.15F, 0.13F, 0.10F}});
    patches.push_back({-0.30F, -0.45F, -0.06F, -0.14F, {0.07F, 0.06F, 0.06F}});
    patches.push_back({-0.29F, -0.44F, -0.07F, -0.15F, someColour(chance, 0.2, 0.7)});
    patches.push_back({-0.25F, -0.40F, -0.14F, -0.24F, someColour(chance, 0.1, 0.6)});
    addShelf(patches, chance);
    if (light.windowBehind > 0) {
        const Vector3 sky = Vector3{0.90F, 0.97F, 1.05F} * light.windowBehind;
        patches.push_back({-0.36F, -0.60F, 0.50F, 0.45F, {0.55F, 0.53F, 0.50F}});
        patches.push_back({-0.33F, -0.60F, 0.05F, 0.42F, sky, true});
        patches.push_back({0.09F, -0.60F, 0.47F, 0.42F, sky, true});
        patches.push_back({-0.33F, 0.20F, 0.05F, 0.42F, sky * 0.35F, true});
        patches.push_back({0.09F, 0.24F, 0.47F, 0.42F, sky * 0.30F, true});
    }
    for (Patch& patch : patches) {
        patch.left += shift;
        patch.right += shift;
    }
    return patches;
}

}  // namespace

LinearImage drawRoom(int width, int height, const PinholeCamera& camera, const SceneLight& light,
                     std::uint64_t seed) {
    constexpr float softness = 0.004F;
    Chance chance(seed ^ 0xf00dU);
    const Vector3 wall = someColour(chance, 0.42, 0.62);
    const auto blotches = static_cast<float>(chance.between(3, 6));
    const std::vector<Patch> patches = furniture(seed, light);
    const Vector3 lamp = (light.people.keyColour * 0.5F + Vector3{0.5F, 0.5F, 0.5F}) * light.room;
    const auto inside = [](float x, float low, float high) {
        return std::clamp(std::min(x - low, high - x) / softness + 0.5F, 0.0F, 1.0F);
    };
    LinearImage image(width, height);
    const auto f = static_cast<float>(camera.focalLength);
    for (int y = 0; y < height; ++y) {
        const float v = (static_cast<float>(y) + 0.5F - static_cast<float>(camera.centreY)) / f;
        for (int x = 0; x < width; ++x) {
            const float u = (static_cast<float>(x) + 0.5F - static_cast<float>(camera.centreX)) / f;
            // Brighter towards the lamp, and never quite even.
            const float fall = 1 - 0.25F * u - 0.3F * v +
                               0.03F * std::sin(u * blotches * 2 + std::cos(v * blotches * 3));
            Vector3 colour = wall * lamp * fall;
            for (const Patch& patch : patches) {
                const float part =
                    inside(u, patch.left, patch.right) * inside(v, patch.top, patch.bottom);
                if (part <= 0) continue;
                colour =
                    mix(colour, patch.shines ? patch.colour : patch.colour * lamp * fall, part);
            }
            float* pixel = image.pixel(x, y);
            pixel[0] = colour.x;
            pixel[1] = colour.y;
            pixel[2] = colour.z;
        }
    }
    return image;
}

}  // namespace marrowby
