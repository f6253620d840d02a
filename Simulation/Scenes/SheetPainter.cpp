// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SheetPainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

namespace marrowby {

namespace {

constexpr float pi = std::numbers::pi_v<float>;
/// Pixels over which perspective changes the grid's waves too little to see.
constexpr int stretch = 16;

float sinc(float x) {
    return std::abs(x) < 1e-4F ? 1 : std::sin(pi * x) / (pi * x);
}

/// On the unit circle after so many turns; to 0.0001.
struct Phase {
    float cosine = 1;
    float sine = 0;

    [[nodiscard]] static Phase of(float turns) {
        const float rest = turns - static_cast<float>(static_cast<int>(turns));
        // Twice half the angle, which is within a quarter turn.
        const float half = (rest > 0.5F ? rest - 1 : (rest < -0.5F ? rest + 1 : rest)) * pi;
        const float z = half * half;
        const float sine = half * (1 + z * (-1 / 6.0F + z * (1 / 120.0F - z / 5040.0F)));
        const float cosine = 1 + z * (-0.5F + z * (1 / 24.0F + z * (-1 / 720.0F + z / 40320.0F)));
        return {.cosine = cosine * cosine - sine * sine, .sine = 2 * sine * cosine};
    }
    friend Phase operator*(const Phase& a, const Phase& b) {
        return {.cosine = a.cosine * b.cosine - a.sine * b.sine,
                .sine = a.sine * b.cosine + a.cosine * b.sine};
    }
    [[nodiscard]] Phase back() const { return {.cosine = cosine, .sine = -sine}; }
};

float softStep(float x) {
    const float t = std::clamp(x, 0.0F, 1.0F);
    return t * t * (3 - 2 * t);
}

/// How the place on the sheet changes from pixel to pixel.
struct Jacobian {
    float ux = 0;
    float uy = 0;
    float vx = 0;
    float vy = 0;
};

/// A pixel's three bars, and the gap between the rows.
class SubPixelGrid {
  public:
    SubPixelGrid(const Display& display, const SheetView& view)
        : pitch_(display.pixelPitch), view_(view) {}

    void lookFrom(const Jacobian& step) {
        waves_.clear();
        for (int across = 0; across <= highest; ++across) {
            for (int down = across == 0 ? 1 : -highest; down <= highest; ++down) {
                const float a = static_cast<float>(across) / pitch_;
                const float d = static_cast<float>(down) / pitch_;
                const float strength =
                    2 * sinc(static_cast<float>(across) * barWidth) *
                    sinc(static_cast<float>(down) * barHeight) *
                    remaining(a * step.ux + d * step.vx, a * step.uy + d * step.vy);
                if (std::abs(strength) > faintest) {
                    waves_.push_back({across, down, strength});
                }
            }
        }
    }

    /// By what the three colours are multiplied here; 1 on average.
    [[nodiscard]] Vector3 at(float u, float v) const {
        if (waves_.empty()) return {1, 1, 1};
        // Of the waves across: the first, its double and so on; the same down.
        std::array<Phase, highest + 1> across;
        std::array<Phase, highest + 1> down;
        across[1] = Phase::of(u / pitch_ - 0.5F);
        down[1] = Phase::of(v / pitch_ - 0.5F);
        for (std::size_t i = 2; i <= highest; ++i) {
            across[i] = across[i - 1] * across[1];
            down[i] = down[i - 1] * down[1];
        }
        Vector3 sum{1, 1, 1};
        for (const Wave& wave : waves_) {
            const Phase& vertical = down[static_cast<std::size_t>(std::abs(wave.down))];
            const Phase phase = across[static_cast<std::size_t>(wave.across)] *
                                (wave.down < 0 ? vertical.back() : vertical);
            // The green bar is in the middle, red a third of a pixel before it, blue after it.
            const int third = wave.across % 3;
            const float cosine = third == 0 ? 1.0F : -0.5F;
            const float sine = third == 0 ? 0 : (third == 1 ? 0.8660254F : -0.8660254F);
            const float even = cosine * phase.cosine;
            const float odd = sine * phase.sine;
            sum = sum + Vector3{even - odd, phase.cosine, even + odd} * wave.strength;
        }
        return {std::max(sum.x, 0.0F), std::max(sum.y, 0.0F), std::max(sum.z, 0.0F)};
    }

  private:
    /// As the camera can still see it.
    struct Wave {
        /// Turns per pixel of the screen.
        int across = 0;
        int down = 0;
        float strength = 0;
    };

    static constexpr int highest = 3;
    static constexpr float barWidth = 0.26F;
    static constexpr float barHeight = 0.82F;
    static constexpr float faintest = 0.004F;

    /// What lens, pixel and movement leave of a wave of this many turns per pixel.
    [[nodiscard]] float remaining(float x, float y) const {
        const Optics& optics = view_.optics;
        const float blur = std::exp(-2 * pi * pi * optics.blur * optics.blur * (x * x + y * y));
        if (blur < faintest / 4) return 0;
        const auto moved =
            static_cast<float>(view_.motion.x) * x + static_cast<float>(view_.motion.y) * y;
        return blur * sinc(optics.aperture * x) * sinc(optics.aperture * y) * sinc(moved);
    }

    const float pitch_;
    const SheetView& view_;
    std::vector<Wave> waves_;
};

class Painter {
  public:
    Painter(LinearImage& image, const SheetView& view, const PlacedSheet& placed,
            const Texture& texture)
        : image_(image),
          view_(view),
          placed_(placed),
          sheet_(placed.sheet()),
          texture_(texture),
          fit_(sheet_, texture.width(), texture.height()),
          key_(normalized(view.light.people.keyDirection)),
          keyRight_(normalized(cross({0, 1, 0}, key_))),
          keyDown_(cross(key_, keyRight_)),
          grid_(sheet_.display.value_or(Display{}), view) {}

    void paint() {
        const auto corners = placed_.corners(view_.camera);
        const auto [left, right] = std::ranges::minmax(corners, {}, &Point::x);
        const auto [top, bottom] = std::ranges::minmax(corners, {}, &Point::y);
        // A bent sheet bulges beyond its corners.
        const double bulge = sheet_.bend == 0 ? 2 : 2 + (bottom.y - top.y) * 0.1;
        const auto within = [](double x, int most) {
            return static_cast<int>(std::clamp(x, 0.0, static_cast<double>(most)));
        };
        const int firstX = within(left.x - bulge, image_.width);
        const int endX = within(right.x + bulge + 1, image_.width);
        const int firstY = within(top.y - bulge, image_.height);
        const int endY = within(bottom.y + bulge + 1, image_.height);
        for (int y = firstY; y < endY; ++y) {
            pulse_ = 1;
            if (sheet_.display) {
                pulse_ =
                    swing(view_.shutter, y, sheet_.display->pulseDepth, sheet_.display->pulseRate);
            }
            for (int x = firstX; x < endX; x += stretch) {
                paintStretch(x, std::min(x + stretch, endX), y);
            }
        }
    }

  private:
    [[nodiscard]] Vector3 direction(float x, float y) const {
        const auto f = static_cast<float>(view_.camera.focalLength);
        return {.x = (x + 0.5F - static_cast<float>(view_.camera.centreX)) / f,
                .y = (y + 0.5F - static_cast<float>(view_.camera.centreY)) / f,
                .z = 1};
    }

    void paintStretch(int begin, int end, int y) {
        const auto middle = static_cast<float>(begin + end) / 2;
        const auto row = static_cast<float>(y);
        const auto here = placed_.hit(direction(middle, row));
        const auto beside = placed_.hit(direction(middle + 1, row));
        const auto below = placed_.hit(direction(middle, row + 1));
        if (here && beside && below) {
            step_ = {.ux = beside->u - here->u,
                     .uy = below->u - here->u,
                     .vx = beside->v - here->v,
                     .vy = below->v - here->v};
            pixel_ =
                std::max({std::hypot(step_.ux, step_.vx), std::hypot(step_.uy, step_.vy), 1e-7F});
            if (sheet_.display) grid_.lookFrom(step_);
            detail_ = texture_.detail(pixel_ * fit_.pixelsPerMetre);
            mirrors_ = isNearSource(*here, direction(middle, row));
        }
        if (pixel_ <= 0) return;
        for (int x = begin; x < end; ++x) {
            const Vector3 ray = direction(static_cast<float>(x), row);
            const auto hit = placed_.hit(ray);
            if (!hit) continue;
            const float inside = covered(*hit);
            if (inside > 0) put(x, y, *hit, ray, inside);
        }
    }

    /// The distance to the edge of a rounded rectangle, in pixels, as a part of one.
    [[nodiscard]] float covered(const PlacedSheet::Hit& hit) const {
        const float r = sheet_.cornerRadius;
        const float x = std::abs(hit.u) - sheet_.width / 2 + r;
        const float y = std::abs(hit.v) - sheet_.height / 2 + r;
        if (std::max(x, y) < -pixel_) return 1;
        const float outside =
            std::hypot(std::max(x, 0.0F), std::max(y, 0.0F)) + std::min(std::max(x, y), 0.0F) - r;
        return std::clamp(0.5F - outside / pixel_, 0.0F, 1.0F);
    }

    [[nodiscard]] float onPicture(const PlacedSheet::Hit& hit) const {
        const Sheet::Border& border = sheet_.border;
        float inside = pixel_;
        const auto keep = [&inside](float wide, float distance) {
            if (wide > 0) inside = std::min(inside, distance - wide);
        };
        keep(border.side, sheet_.width / 2 - std::abs(hit.u));
        keep(border.top, sheet_.height / 2 + hit.v);
        keep(border.bottom, sheet_.height / 2 - hit.v);
        return std::clamp(0.5F + inside / pixel_, 0.0F, 1.0F);
    }

    /// Whether the surface may mirror the light source near here.
    [[nodiscard]] bool isNearSource(const PlacedSheet::Hit& hit, const Vector3& ray) const {
        const float reach =
            view_.light.sourceRadius * 2 + sheet_.roughness * 2 + 0.1F + std::abs(sheet_.bend) / 50;
        return dot(reflection(hit, ray), key_) > std::cos(std::min(reach, pi));
    }

    [[nodiscard]] static Vector3 reflection(const PlacedSheet::Hit& hit, const Vector3& ray) {
        const Vector3 in = normalized(ray);
        return in - hit.normal * (2 * dot(in, hit.normal));
    }

    /// The light source as the surface mirrors it: a window's shape.
    [[nodiscard]] Vector3 mirrored(const PlacedSheet::Hit& hit, const Vector3& ray) const {
        const Vector3 out = reflection(hit, ray);
        if (dot(out, key_) <= 0) return {};
        const float soft = sheet_.roughness + 0.01F;
        const float radius = view_.light.sourceRadius;
        const auto seen = [soft](float reach, float x) {
            return softStep((reach - std::abs(x)) / soft + 0.5F);
        };
        const float part =
            seen(radius, dot(out, keyRight_)) * seen(radius * 1.6F, dot(out, keyDown_));
        // Scattered light is spread over more directions.
        const float spread = radius * radius / ((radius + soft) * (radius + soft));
        return view_.light.people.keyColour * (view_.light.source * sheet_.gloss * part * spread);
    }

    [[nodiscard]] Vector3 received(const Vector3& normal) const {
        const Lighting& light = view_.light.people;
        return light.keyColour * (light.keyStrength * std::max(dot(key_, normal), 0.0F)) +
               light.ambient;
    }

    void put(int x, int y, const PlacedSheet::Hit& hit, const Vector3& ray, float inside) {
        const float scale = fit_.pixelsPerMetre;
        const Texture::Sample sample =
            texture_.at(fit_.middleX + hit.u * scale, fit_.middleY + hit.v * scale, detail_);
        const float picture = onPicture(hit);
        const Vector3 shown{std::min(sample.colour.x, 1.0F), std::min(sample.colour.y, 1.0F),
                            std::min(sample.colour.z, 1.0F)};
        const Vector3 lit = received(hit.normal);
        Vector3 colour;
        if (sheet_.display) {
            constexpr float black = 0.003F;
            constexpr Vector3 panel{.x = 0.012F, .y = 0.012F, .z = 0.014F};
            const Vector3 given = (shown + Vector3{black, black, black}) *
                                  (sheet_.display->white * pulse_) * grid_.at(hit.u, hit.v);
            colour = mix(sheet_.borderColour * lit, panel * lit + given, picture);
        } else {
            constexpr float paper = 0.85F;
            colour = mix(sheet_.borderColour, shown * paper, picture) * lit;
        }
        colour = colour + view_.light.people.ambient * (0.6F * sheet_.gloss);
        if (mirrors_) colour = colour + mirrored(hit, ray);
        const float part = inside * (1 - picture + picture * sample.coverage);
        float* to = image_.pixel(x, y);
        to[0] += (colour.x - to[0]) * part;
        to[1] += (colour.y - to[1]) * part;
        to[2] += (colour.z - to[2]) * part;
        float& coverage = image_.coverage[image_.index(x, y)];
        coverage += (1 - coverage) * part;
    }

    LinearImage& image_;
    const SheetView& view_;
    const PlacedSheet& placed_;
    const Sheet& sheet_;
    const Texture& texture_;
    const TextureFit fit_;
    const Vector3 key_;
    const Vector3 keyRight_;
    const Vector3 keyDown_;
    SubPixelGrid grid_;
    Jacobian step_;
    /// Metres on the sheet that a camera pixel sees.
    float pixel_ = 0;
    Texture::Detail detail_;
    bool mirrors_ = false;
    float pulse_ = 1;
};

}  // namespace

TextureFit::TextureFit(const Sheet& sheet, int textureWidth, int textureHeight) {
    const float width = sheet.width - 2 * sheet.border.side;
    const float height = sheet.height - sheet.border.top - sheet.border.bottom;
    const auto pixelsWide = static_cast<float>(textureWidth);
    const auto pixelsHigh = static_cast<float>(textureHeight);
    pixelsPerMetre = std::min(pixelsWide / width, pixelsHigh / height);
    middleX = pixelsWide / 2;
    middleY = pixelsHigh / 2 - (sheet.border.top - sheet.border.bottom) / 2 * pixelsPerMetre;
}

void paintSheet(LinearImage& image, const SheetView& view, const PlacedSheet& placed,
                const Texture& texture) {
    Painter(image, view, placed, texture).paint();
}

}  // namespace marrowby
