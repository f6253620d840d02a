// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Room.h"

#include "Simulation/Scenes/Chance.h"
#include "UnlockCore/Foundation/Fatal.h"

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
    // Avoids a warning of g++ 12 about the first one.
    patches.reserve(64);
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

/// Something upright behind a head, as wide and high as a device held before it might look.
Patch behindHead(Chance& chance, float bottom) {
    const auto between = [&](double low, double high) {
        return static_cast<float>(chance.between(low, high));
    };
    return {.left = -between(0.15, 0.34),
            .top = -between(0.13, 0.34),
            .right = between(0.15, 0.34),
            .bottom = bottom,
            .colour = {}};
}

/// A border of this width about what `inside` shows.
void addFrame(std::vector<Patch>& patches, const Patch& inside, float width, const Vector3& frame) {
    patches.push_back({inside.left - width, inside.top - width, inside.right + width,
                       inside.bottom + width, frame});
    patches.push_back(inside);
}

void addCurtain(std::vector<Patch>& patches, Chance& chance) {
    Patch glass = behindHead(chance, 1);
    glass.colour = someColour(chance, 0.6, 0.9);
    patches.push_back(glass);
    const Vector3 cloth = someColour(chance, 0.05, 0.6);
    for (float x = glass.left - 0.25F; x < glass.right + 0.25F;) {
        const auto fold = static_cast<float>(chance.between(0.015, 0.04));
        if (x + fold <= glass.left || x >= glass.right) {
            const auto shade = static_cast<float>(chance.between(0.7, 1.1));
            patches.push_back({x, glass.top, x + fold, 1, cloth * shade});
        }
        x += fold;
    }
    const Vector3 rod = someColour(chance, 0.03, 0.5);
    patches.push_back({glass.left - 0.3F, glass.top - 0.014F, glass.right + 0.3F, glass.top, rod});
}

void addWindow(std::vector<Patch>& patches, Chance& chance) {
    Patch glass = behindHead(chance, static_cast<float>(chance.between(0.05, 0.3)));
    glass.colour = someColour(chance, 0.6, 0.95);
    const Vector3 wood = someColour(chance, 0.1, 0.8);
    addFrame(patches, glass, 0.022F, wood);
    const auto x = static_cast<float>(chance.between(-0.08, 0.08));
    const auto y = static_cast<float>(chance.between(-0.12, 0.05));
    patches.push_back({x, glass.top, x + 0.018F, glass.bottom, wood});
    patches.push_back({glass.left, y, glass.right, y + 0.018F, wood});
}

void addDoor(std::vector<Patch>& patches, Chance& chance) {
    Patch leaf = behindHead(chance, 1);
    leaf.colour = someColour(chance, 0.1, 0.8);
    addFrame(patches, leaf, 0.03F, someColour(chance, 0.1, 0.8));
    const float middle = (leaf.left + leaf.right) / 2;
    for (const float left : {leaf.left + 0.03F, middle + 0.015F}) {
        const float right = left + (leaf.right - leaf.left) / 2 - 0.045F;
        patches.push_back({left, leaf.top + 0.04F, right, 0.05F, leaf.colour * 0.8F});
        patches.push_back({left, 0.10F, right, 1, leaf.colour * 0.8F});
    }
}

void addBoards(std::vector<Patch>& patches, Chance& chance) {
    const Patch back = behindHead(chance, 1);
    const Vector3 wood = someColour(chance, 0.05, 0.6);
    patches.push_back({back.left, -0.5F, back.right, 1, wood * 0.6F});
    const auto step = static_cast<float>(chance.between(0.12, 0.2));
    const auto boards = static_cast<int>(std::ceil((0.5F - back.top) / step)) + 2;
    for (int board = 0; board < boards; ++board) {
        const float y = back.top + static_cast<float>(board - 2) * step;
        for (float x = back.left + 0.01F; x < back.right - 0.04F;) {
            const auto thickness = static_cast<float>(chance.between(0.015, 0.04));
            const auto size = step * static_cast<float>(chance.between(0.5, 0.85));
            if (chance.between(0, 1) < 0.5) {
                patches.push_back({x, y - size, x + thickness, y, someColour(chance, 0.03, 0.5)});
            }
            x += thickness + 0.002F;
        }
        patches.push_back({back.left, y, back.right, y + 0.016F, wood});
    }
    for (const float x : {back.left, back.right})
        patches.push_back({x - 0.008F, -0.5F, x + 0.008F, 1, wood});
}

void addPicture(std::vector<Patch>& patches, Chance& chance) {
    Patch mat = behindHead(chance, static_cast<float>(chance.between(0.05, 0.28)));
    mat.colour = someColour(chance, 0.6, 0.8);
    addFrame(patches, mat, 0.014F, someColour(chance, 0.02, 0.4));
    const Patch image{.left = mat.left + 0.035F,
                      .top = mat.top + 0.035F,
                      .right = mat.right - 0.035F,
                      .bottom = mat.bottom - 0.035F,
                      .colour = someColour(chance, 0.1, 0.7)};
    patches.push_back(image);
    for (int blot = 0; blot < 6; ++blot) {
        const auto x = static_cast<float>(chance.between(image.left, image.right - 0.04));
        const auto y = static_cast<float>(chance.between(image.top, image.bottom - 0.04));
        patches.push_back({x, y, std::min(x + 0.1F, image.right), std::min(y + 0.07F, image.bottom),
                           someColour(chance, 0.05, 0.8)});
    }
}

void addMonitor(std::vector<Patch>& patches, Chance& chance) {
    Patch screen = behindHead(chance, static_cast<float>(chance.between(0.06, 0.25)));
    screen.colour = someColour(chance, 0.1, 0.9);
    screen.shines = true;
    addFrame(patches, screen, 0.009F, {0.02F, 0.02F, 0.022F});
    for (int window = 0; window < 4; ++window) {
        const auto x = static_cast<float>(chance.between(screen.left, screen.right - 0.06));
        const auto y = static_cast<float>(chance.between(screen.top, screen.bottom - 0.06));
        patches.push_back({x, y, std::min(x + 0.16F, screen.right),
                           std::min(y + 0.12F, screen.bottom), someColour(chance, 0.1, 1), true});
    }
    patches.push_back({-0.03F, screen.bottom + 0.009F, 0.03F, 1, {0.04F, 0.04F, 0.04F}});
}

/// Cupboards on the wall, whose lower edge is above the head or behind it.
void addCupboards(std::vector<Patch>& patches, Chance& chance) {
    const Patch place = behindHead(chance, 1);
    const Vector3 wood = someColour(chance, 0.2, 0.8);
    patches.push_back({-1, -1, 1, place.top, wood});
    patches.push_back({-1, place.top, 1, place.top + 0.008F, wood * 0.4F});
    const float width = place.right - place.left;
    const auto doors = static_cast<int>(std::ceil((1.6F - place.left) / width));
    for (int door = 0; door < doors; ++door) {
        const float x = place.left - 0.6F + static_cast<float>(door) * width;
        patches.push_back({x, -1, x + 0.006F, place.top, wood * 0.4F});
    }
    // A kitchen's side walls, or a niche.
    for (const float x : {place.left, place.right})
        patches.push_back({x, place.top, x + 0.012F, 1, wood * 0.6F});
}

std::vector<Patch> furnished(std::uint64_t seed, const SceneLight& light, Backdrop backdrop) {
    if (backdrop == Backdrop::furniture) return furniture(seed, light);
    Chance chance(seed);
    std::vector<Patch> patches;
    switch (backdrop) {
        case Backdrop::furniture:
            break;
        case Backdrop::curtain:
            addCurtain(patches, chance);
            break;
        case Backdrop::window:
            addWindow(patches, chance);
            break;
        case Backdrop::door:
            addDoor(patches, chance);
            break;
        case Backdrop::shelf:
            addBoards(patches, chance);
            break;
        case Backdrop::picture:
            addPicture(patches, chance);
            break;
        case Backdrop::monitor:
            addMonitor(patches, chance);
            break;
        case Backdrop::desk:
            addCupboards(patches, chance);
            break;
    }
    const auto shift = static_cast<float>(chance.between(-0.06, 0.06));
    for (Patch& patch : patches) {
        patch.left += shift;
        patch.right += shift;
    }
    return patches;
}

/// How much of a place lies inside, where edges are this soft.
float inside(const Patch& patch, float u, float v) {
    constexpr float softness = 0.004F;
    const auto along = [](float x, float low, float high) {
        return std::clamp(std::min(x - low, high - x) / softness + 0.5F, 0.0F, 1.0F);
    };
    return along(u, patch.left, patch.right) * along(v, patch.top, patch.bottom);
}

Vector3 lampIn(const SceneLight& light) {
    return (light.people.keyColour * 0.5F + Vector3{0.5F, 0.5F, 0.5F}) * light.room;
}

}  // namespace

std::string_view name(Backdrop backdrop) {
    switch (backdrop) {
        case Backdrop::furniture:
            return "furniture";
        case Backdrop::curtain:
            return "curtain";
        case Backdrop::window:
            return "window";
        case Backdrop::door:
            return "door";
        case Backdrop::shelf:
            return "shelf";
        case Backdrop::picture:
            return "picture";
        case Backdrop::monitor:
            return "monitor";
        case Backdrop::desk:
            return "desk";
    }
    fatal("not a backdrop");
}

LinearImage drawRoom(int width, int height, const PinholeCamera& camera, const SceneLight& light,
                     std::uint64_t seed, Backdrop backdrop) {
    Chance chance(seed ^ 0xf00dU);
    const Vector3 wall = someColour(chance, 0.42, 0.62);
    const auto blotches = static_cast<float>(chance.between(3, 6));
    const std::vector<Patch> patches = furnished(seed, light, backdrop);
    const Vector3 lamp = lampIn(light);
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
                const float part = inside(patch, u, v);
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

void drawDesk(LinearImage& image, const PinholeCamera& camera, const SceneLight& light,
              std::uint64_t seed) {
    Chance chance(seed ^ 0xde5cU);
    const Patch desk{.left = -2,
                     .top = static_cast<float>(chance.between(0.27, 0.36)),
                     .right = 2,
                     .bottom = 2,
                     .colour = someColour(chance, 0.1, 0.7)};
    const Vector3 colour = desk.colour * lampIn(light);
    const auto f = static_cast<float>(camera.focalLength);
    for (int y = 0; y < image.height; ++y) {
        const float v = (static_cast<float>(y) + 0.5F - static_cast<float>(camera.centreY)) / f;
        const float part = inside(desk, 0, v);
        if (part <= 0) continue;
        for (int x = 0; x < image.width; ++x) {
            float* pixel = image.pixel(x, y);
            pixel[0] = pixel[0] * (1 - part) + colour.x * part;
            pixel[1] = pixel[1] * (1 - part) + colour.y * part;
            pixel[2] = pixel[2] * (1 - part) + colour.z * part;
        }
    }
}

}  // namespace marrowby
