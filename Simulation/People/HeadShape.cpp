// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/HeadShape.h"

#include "Simulation/People/Fields.h"

#include <algorithm>
#include <cmath>

namespace marrowby {

using namespace fields;

namespace {

using HairStyle = PersonTraits::HairStyle;
using BeardStyle = PersonTraits::BeardStyle;

constexpr float far = 1000;

float square(float x) {
    return x * x;
}

Vector3 mirrored(const Vector3& p) {
    return {std::abs(p.x), p.y, p.z};
}

/// 0 at the middle of the lips, 1 at a corner.
float alongLips(float x, float width) {
    return std::min(std::abs(x) / width, 1.F);
}

}  // namespace

Vector3 HeadShape::symmetric(const Vector3& p) const {
    return {p.x + t_.asymmetry * (p.y + 40), p.y, p.z};
}

Vector3 HeadShape::eye(float side) const {
    return {side * t_.eyeX - t_.asymmetry * 40, 0, -t_.eyeRadius - t_.eyeDepth};
}

HeadShape::LidEdges HeadShape::lids(float dx) const {
    const float s = std::clamp(dx / t_.eyeWidth, -1.F, 1.F);
    const float line = t_.eyeTilt * dx;
    // The upper lid is highest towards the nose, the lower one lowest away from it.
    const float above = std::pow(std::max(0.F, 1 - square(s)), 0.8F) * (1 - 0.16F * s);
    const float below = std::pow(std::max(0.F, 1 - square(s)), 0.9F) * (1 + 0.2F * s);
    const float upper = line + t_.eyeOpening * 0.98F * above;
    return {.upper = upper,
            .lower = line - t_.eyeOpening * 0.92F * below,
            .crease = upper + 2.2F + 3.2F * (1 - t_.eyeHood) * (1 - 0.5F * square(s))};
}

float HeadShape::mouthLine(float x) const {
    const float s = alongLips(x, t_.mouthWidth);
    // A shallow m, its corners up or down.
    return t_.mouthY + 0.9F * bump(x / 7) * -1 + 0.5F * bump((std::abs(x) - 10) / 8) +
           t_.mouthCurve * s * s;
}

float HeadShape::upperLip(float x) const {
    const float s = alongLips(x, t_.mouthWidth);
    const float bow = 1 - 0.22F * bump(x / 4.5F) + 0.12F * bump((std::abs(x) - 5.5F) / 6);
    return t_.upperLip * bow * std::pow(std::max(0.F, 1 - s), 0.75F) * (1 + 0.35F * s);
}

float HeadShape::lowerLip(float x) const {
    const float s = alongLips(x, t_.mouthWidth);
    return t_.lowerLip * std::pow(std::max(0.F, 1 - s * s), 0.8F);
}

float HeadShape::browMiddle(float x) const {
    const float s = (x - t_.browGap) / (t_.browEnd - t_.browGap);
    return t_.browY - 3 + t_.browTilt * (x - 30) + t_.browArch * (1 - square((s - 0.62F) / 0.62F));
}

float HeadShape::browThickness(float x) const {
    const float s = (x - t_.browGap) / (t_.browEnd - t_.browGap);
    if (s < 0 || s > 1) return 0;
    return t_.browThickness * smoothstep(-0.25F, 0.2F, s) * (1 - 0.72F * s * s);
}

Vector3 HeadShape::onFace(float x, float y) const {
    float z = 60;
    for (int i = 0; i < 60; ++i) {
        const float d = bareFace({x, y, z});
        if (d < 0.02F || z < -120) break;
        z -= d * 0.7F;
    }
    return {x, y, z};
}

float HeadShape::cheekFold(const Vector3& q) const {
    const Vector3 from{.x = t_.noseWidth + 4, .y = t_.noseBaseY + 8, .z = 0};
    const Vector3 to{.x = t_.mouthWidth + 9, .y = t_.mouthY + 4, .z = 0};
    // Bent outwards, soft at its ends.
    const float along = (q.y - to.y) / (from.y - to.y);
    const float bend = 3 * bump(along * 2 - 1);
    return capsule({q.x - bend, q.y, 0}, from, to, 0, 0);
}

float HeadShape::nose(const Vector3& p, float d) const {
    if (p.z < -25 || std::abs(p.x) > 45 || p.y > 40 || p.y < -80) return d;
    const float base = t_.noseBaseY;
    const float tipY = base + t_.noseTipRise;
    const float tipZ = t_.noseTipZ;
    const float bend = t_.noseBend * bump((p.y + 20) / 22);
    const Vector3 c{p.x - bend, p.y, p.z};
    const Vector3 q = mirrored(c);
    const float w = t_.noseWidth;

    const float back = tipZ - t_.noseTipRadius;
    const Vector3 top{.x = 0, .y = 8, .z = t_.bridgeZ - t_.bridgeWidth};
    const Vector3 middle{
        .x = 0, .y = base * 0.38F, .z = (top.z + back) * 0.5F + t_.noseBump + 1.5F};
    const Vector3 tip{.x = 0, .y = tipY, .z = back};
    float n = capsule(c, top, middle, t_.bridgeWidth, t_.bridgeWidth + 0.8F);
    n = joined(n, capsule(c, middle, tip, t_.bridgeWidth + 0.8F, t_.noseTipRadius - 1.6F), 6);
    n = joined(n, length(c - tip) - t_.noseTipRadius + 0.6F, 6);
    const float wingZ = back - 8;
    n = joined(
        n, ellipsoid(q, {.x = w - 5.5F, .y = base + 4.5F, .z = wingZ}, {.x = 6, .y = 6.4F, .z = 9}),
        5);
    // Between the nostrils.
    n = joined(n,
               capsule(c, {.x = 0, .y = base + 1.5F, .z = back - 12},
                       {.x = 0, .y = tipY - 4, .z = back + 2}, 3.4F, 4),
               4);
    n = joined(d, n, 12);
    return carved(n,
                  ellipsoid(q, {.x = w * 0.44F, .y = base + 0.6F, .z = back - 3.5F},
                            {.x = w * 0.17F, .y = 2.7F, .z = 4.6F}),
                  2.2F);
}

float HeadShape::mouth(const Vector3& p, float d) const {
    if (p.z < -40 || std::abs(p.x) > 50 || std::abs(p.y - t_.mouthY) > 40) return d;
    // Lips bend back around the teeth.
    const Vector3 q{p.x, p.y, p.z + p.x * p.x * 0.0165F};
    const float line = mouthLine(p.x);
    const float z = t_.mouthZ;
    const float w = t_.mouthWidth;
    const float up = t_.upperLip;
    const float low = t_.lowerLip;
    // The hollow under the nose.
    d = carved(d,
               capsule(p, {.x = 0, .y = t_.noseBaseY - 3, .z = z + 4},
                       {.x = 0, .y = t_.mouthY + up + 2, .z = z + 5.5F}, 2.2F, 3),
               4);
    const Vector3 u{q.x, q.y - line, q.z};
    d = joined(d,
               ellipsoid(u, {.x = 0, .y = up * 0.42F, .z = z - 5.5F},
                         {.x = w * 0.93F, .y = up * 0.72F + 1, .z = 7.2F}),
               7);
    d = joined(d,
               ellipsoid(u, {.x = 0, .y = -low * 0.45F, .z = z - 6},
                         {.x = w * 0.86F, .y = low * 0.66F + 0.6F, .z = 7.4F}),
               4.5F);
    // The hollow over the chin.
    d = carved(
        d,
        ellipsoid(p, {.x = 0, .y = t_.mouthY - low - 6, .z = z + 4}, {.x = 17, .y = 4.5F, .z = 6}),
        8);
    const float gap = mouthGap * 0.5F * (1 - square(alongLips(p.x, w * 0.97F)));
    const float depth = 3 + 12 * (1 - square(alongLips(p.x, w)));
    const float slit = std::max({std::abs(u.y) - gap, z - depth - q.z, std::abs(p.x) - w});
    return carved(d, slit, 1.1F);
}

float HeadShape::eyes(const Vector3& p, float d) const {
    if (p.z < -40 || std::abs(p.y) > 40 || std::abs(p.x) > 62) return d;
    const Vector3 q = mirrored(p);
    const Vector3 c{t_.eyeX, 0, -t_.eyeRadius - t_.eyeDepth};
    const float dx = q.x - c.x;
    const LidEdges edges = lids(dx);
    const float fromEye = length(q - c);
    // The lids' shell, then the fold over it, then the opening.
    d = joined(d, fromEye - t_.eyeRadius - lidThickness, 5);
    const float foldY = edges.crease + 4.2F - (dx > 0 ? 0.012F * dx * dx : 0.006F * dx * dx);
    const float foldZ = c.z + t_.eyeRadius - 2.2F + t_.eyeHood * 1.6F - 0.022F * dx * dx;
    const float fold = std::sqrt(square(q.y - foldY) + square(q.z - foldZ) +
                                 square(std::max(0.F, std::abs(dx) - 15))) -
                       4.2F + 0.011F * dx * dx;
    d = joined(d, fold, 4);
    // The bag under it.
    const float bagY = edges.lower - 8;
    const float bag =
        std::sqrt(square((q.y - bagY) * 0.8F) + square(q.z - (c.z + 6.5F - 0.02F * dx * dx)) +
                  square(std::max(0.F, std::abs(dx) - 12))) -
        (1.5F + 2.2F * t_.age);
    d = joined(d, bag, 6);
    const float half = (edges.upper - edges.lower) * 0.5F;
    const float opening =
        std::max({std::abs(q.y - (edges.upper + edges.lower) * 0.5F) - half,
                  std::abs(dx) - t_.eyeWidth, t_.eyeRadius - 1.5F - fromEye, c.z - q.z});
    return carved(d, opening, 0.9F);
}

float HeadShape::bareFace(const Vector3& point) const {
    const Vector3 p = symmetric(point);
    const Vector3 q = mirrored(p);
    float d = ellipsoid(p, {.x = 0, .y = t_.skullTop - 90, .z = -92},
                        {.x = t_.skullWidth, .y = 90, .z = t_.skullDepth});
    // Forehead.
    d = joined(d,
               ellipsoid(p, {.x = 0, .y = 40, .z = -52 + t_.foreheadSlope * 0.4F},
                         {.x = t_.skullWidth - 13, .y = 50, .z = 56}),
               18);
    d = joined(
        d, ellipsoid(p, {.x = 0, .y = -36, .z = -62}, {.x = t_.cheekWidth, .y = 68, .z = 61}), 22);
    // Teeth and lips' ground.
    d = joined(d,
               ellipsoid(p, {.x = 0, .y = t_.mouthY + 9, .z = t_.mouthZ - 46},
                         {.x = 35, .y = 33, .z = 43}),
               20);
    d = joined(d,
               ellipsoid(q, {.x = t_.cheekWidth * 0.68F, .y = -24, .z = -26},
                         {.x = 17 + t_.cheekBone, .y = 14, .z = 18 + t_.cheekBone}),
               20);
    d = joined(
        d,
        ellipsoid(q, {.x = 34, .y = -48, .z = -24}, {.x = 15, .y = 19, .z = 16 + t_.cheekFullness}),
        20);
    const Vector3 gonion{.x = t_.jawWidth - 9, .y = t_.jawY, .z = -74};
    const Vector3 chinSide{.x = t_.chinWidth * 0.6F, .y = t_.chinY + 13, .z = -10 + t_.chinZ};
    d = joined(d, capsule(q, gonion, chinSide, 12, 12), 24);
    d = joined(d,
               ellipsoid(p, {.x = 0, .y = t_.chinY + 13, .z = -6 + t_.chinZ},
                         {.x = t_.chinWidth, .y = 13.5F, .z = 14.5F}),
               24);
    d = joined(d,
               capsule(q, {.x = 9, .y = t_.browY - 5, .z = 2 + t_.browRidge},
                       {.x = 42, .y = t_.browY - 6, .z = -13 + t_.browRidge * 0.6F}, 6, 6),
               12);
    d = carved(
        d, ellipsoid(q, {.x = t_.eyeX, .y = -1, .z = 7 - t_.eyeDepth}, {.x = 20, .y = 11, .z = 14}),
        11);
    d = nose(p, d);
    // Lines from the nose to the corners of the mouth.
    if (p.z > -30) {
        const float fold = cheekFold(q);
        d += (0.3F + 1.2F * t_.age) * bump(fold / 5);
    }
    d = mouth(p, d);
    return eyes(p, d);
}

float HeadShape::skin(const Vector3& p) const {
    float d = p.y > -170 ? bareFace(p) : far;
    const Vector3 q = mirrored(p);
    // Ears: a disc with a rim, its hollow turned forward.
    const Vector3 e = q - Vector3{.x = t_.skullWidth + 1, .y = -4, .z = -100};
    // Long hair hides them.
    if (length(e) < 70 && !isHairLong()) {
        const float cosTilt = std::cos(t_.earTilt);
        const float sinTilt = std::sin(t_.earTilt);
        // Out of the head, up, back.
        Vector3 r{e.x * cosTilt + e.z * sinTilt, e.y, e.z * cosTilt - e.x * sinTilt};
        r = Vector3{r.x, r.y * 0.98F + r.z * 0.2F, r.z * 0.98F - r.y * 0.2F} * (1 / t_.earSize);
        float ear = ellipsoid(r, {.x = 3, .y = 3, .z = -4}, {.x = 4.5F, .y = 26, .z = 16});
        ear = joined(ear, ellipsoid(r, {.x = 2, .y = -17, .z = 2}, {.x = 3.8F, .y = 7.5F, .z = 7}),
                     5);
        ear = carved(ear, ellipsoid(r, {.x = 8, .y = 3, .z = -1}, {.x = 5.2F, .y = 19, .z = 9}), 4);
        d = joined(d, ear * t_.earSize, 7);
    }
    if (p.y < -20) {
        const Vector3 top{.x = 0, .y = -60, .z = -102};
        const Vector3 base{.x = 0, .y = -200, .z = -118};
        float body = capsule(p, top, base, t_.neckRadius - 2, t_.neckRadius + 5);
        const float w = t_.shoulderWidth;
        body = joined(body,
                      capsule(q, {.x = 20, .y = -170, .z = -128},
                              {.x = w - 20, .y = -226, .z = -122}, 30, 44),
                      45);
        const Vector3 chest{p.x, std::max(p.y, -340.F), p.z};
        body = joined(body,
                      ellipsoid(chest, {.x = 0, .y = -340, .z = -112}, {.x = w, .y = 160, .z = 96}),
                      40);
        body = joined(body,
                      capsule(q, {.x = w - 12, .y = -250, .z = -124},
                              {.x = w + 45, .y = -900, .z = -110}, 48, 40),
                      22);
        d = joined(d, body, 14);
    }
    return d;
}

float HeadShape::clothField(const Vector3& p) const {
    const float neckline =
        std::max(-168 - 0.32F * (p.z + 100) - p.y,
                 std::min(std::hypot(p.x, p.z + 112) - t_.neckRadius - 24, t_.chinY - 34 - p.y));
    const float vee =
        t_.isCollared ? std::max(0.F, 34 - 1.15F * std::abs(p.x)) * smoothstep(-90, -60, p.z) : 0;
    return neckline - vee;
}

bool HeadShape::isHairLong() const {
    return t_.hair == HairStyle::bob || t_.hair == HairStyle::longHair ||
           t_.hair == HairStyle::fringe;
}

float HeadShape::hairField(const Vector3& p) const {
    const float x = std::abs(p.x);
    const float wander = 3.5F * (noise(p * 0.14F, t_.noiseSeed) - 0.5F);
    float line = t_.hairlineY + t_.hairRecess * bump((x - 36) / 24);
    if (t_.hair == HairStyle::fringe) line = t_.browY + 10;
    if (isHairLong()) line -= 16 * smoothstep(18, 58, x);
    float f = (p.y - line) * 0.85F - (p.z - 3) * 0.55F + wander;
    f += 45 * smoothstep(-104, -132, p.z);
    // Short hair leaves the ears and the nape free.
    const float ear = (std::sqrt(square((p.y + 8) / 35) + square((p.z + 99) / 23)) - 1) * 24;
    if (x > 40 && !isHairLong()) f = std::min(f, ear);
    f = std::min(f, p.y + 84);

    if (t_.hair == HairStyle::crown) {
        f = std::min(f, 52 - p.y + 0.25F * (-90 - p.z) + 3 * wander);
    }
    return f;
}

HeadShape::Cover HeadShape::scalp(const Vector3& p) const {
    if (t_.hair == HairStyle::bald || p.z > 20 || p.y < -95) return {};
    const float f = hairField(p);

    const float top = smoothstep(35, 95, p.y);
    const float k = t_.hairThickness;
    const float sideburn = std::min({7.5F - std::abs(p.z + 71), p.y + 24, std::abs(p.x) - 50});
    Cover cover{.density = smoothstep(-5, 8, std::max(f, isHairLong() ? -9.F : sideburn))};
    const float rise = smoothstep(0, 24, f);
    switch (t_.hair) {
        case HairStyle::bald:
            break;
        case HairStyle::buzzed:
            cover.density *= 0.8F;
            cover.thickness = 1.5F * rise;
            break;
        case HairStyle::crown:
            cover.thickness = 6 * k * rise;
            break;
        case HairStyle::shortCut:
            cover.thickness = (5 + 11 * k * top) * rise;
            break;
        case HairStyle::sidePart: {
            const float over = t_.partX > 0 ? t_.partX - p.x : p.x - t_.partX;
            const float parting = 1 - 0.3F * bump((p.x - t_.partX) / 9) * smoothstep(30, 70, p.y);
            const float full = 6 + (5 + 12 * smoothstep(-8, 40, over)) * k * top;
            cover.thickness = full * smoothstep(0, 10 + full, f) * parting;
            break;
        }
        case HairStyle::curly: {
            const float curls =
                noise(p * 0.16F, t_.noiseSeed) + 0.5F * noise(p * 0.33F, t_.noiseSeed);
            cover.thickness =
                (9 + 15 * k * (0.4F + 0.6F * top) + 7 * (curls - 0.75F)) * smoothstep(-2, 34, f);
            break;
        }
        case HairStyle::fringe:
            cover.thickness = (7 + 7 * k * top) * smoothstep(0, 9, f);
            break;
        case HairStyle::bob:
        case HairStyle::longHair:
            // Scalp shows where it parts.
            cover.density *= 1 - 0.75F * bump((p.x - t_.partX) / 2.4F) * smoothstep(60, 80, p.y);
            cover.thickness = (8 + 9 * k * top) * rise;
            break;
    }
    return cover;
}

float HeadShape::locks(const Vector3& p) const {
    if (!isHairLong() || p.z > 20) return far;
    const bool isLong = t_.hair == HairStyle::longHair;
    const float end = isLong ? -190.F : -92.F;
    const float k = t_.hairThickness;
    const float waves = 3 * (noise({p.x * 0.05F, p.y * 0.04F, p.z * 0.07F}, t_.noiseSeed) - 0.5F);
    const Vector3 q = mirrored(p);
    const float sway = 5 * std::sin(p.y * 0.035F + static_cast<float>(t_.noiseSeed % 7U));
    const Vector3 side{q.x, q.y, (q.z + 82) * 0.40F};
    const float out = t_.skullWidth - 1 + sway * (isLong ? 1.F : 0.4F);
    float d = capsule(side, {.x = t_.skullWidth - 12, .y = 60, .z = 0},
                      {.x = out, .y = end, .z = 2}, 17, 9 + 5 * k);
    const Vector3 behind{q.x * 0.45F, q.y, q.z};
    d = joined(
        d,
        capsule(behind, {.x = 0, .y = 30, .z = -150}, {.x = 0, .y = end - 10, .z = -160}, 36, 32),
        26);
    return d + waves;
}

HeadShape::Cover HeadShape::beard(const Vector3& p) const {
    if (t_.beard == BeardStyle::none || p.z < -90 || p.y > 0 || p.y < t_.chinY - 40) return {};
    const float x = std::abs(p.x);
    const float mouthY = t_.mouthY;
    const float cheekLine =
        std::lerp(mouthY + 5, -24.F, std::clamp((x - t_.mouthWidth) / 34, 0.F, 1.F));
    const float underside = p.y - (t_.chinY - 16 + 0.55F * std::max(0.F, -5 - p.z));
    const float lips =
        (std::sqrt(square(x / (t_.mouthWidth + 3)) +
                   square((p.y - mouthY) / ((p.y > mouthY ? t_.upperLip : t_.lowerLip) + 2.4F))) -
         1) *
        9;
    const float cheeks = std::min({cheekLine - p.y, underside, p.z + 82});
    const float moustache =
        std::min({t_.noseBaseY - 1.5F - p.y, p.y - mouthY + 1, t_.mouthWidth + 5 - x, p.z + 20});
    const float chin = std::min({25 - x + 0.2F * (mouthY - p.y), mouthY - 2 - p.y, underside});
    float f = -far;
    float density = 0.95F;
    float depth = 0;
    switch (t_.beard) {
        case BeardStyle::none:
            break;
        case BeardStyle::stubble:
            f = std::max(cheeks, moustache);
            density = 0.30F + 0.18F * t_.beardLength;
            break;
        case BeardStyle::moustache:
            f = moustache;
            depth = 3;
            break;
        case BeardStyle::goatee:
            f = std::max(chin, moustache);
            depth = 4;
            break;
        case BeardStyle::full:
            f = std::max(cheeks, moustache);
            depth = 6.5F;
            break;
    }
    f = std::min(f, lips) + 5 * (noise(p * 0.2F, 5) - 0.5F);
    return {.density = density * smoothstep(-4, 6, f),
            .thickness = depth * t_.beardLength * smoothstep(0, 14, f)};
}

float HeadShape::brow(const Vector3& p) const {
    if (p.z < -25 || p.y < 0 || p.y > 45) return 0;
    const float x = std::abs(p.x);
    const float half = browThickness(x) * 0.5F + 0.8F;
    const float ends = smoothstep(t_.browGap - 3, t_.browGap + 4, x) *
                       smoothstep(t_.browEnd + 1, t_.browEnd - 8, x);
    return smoothstep(1.35F, 0.35F, std::abs(p.y - browMiddle(x)) / half) * ends * t_.browDensity;
}

float HeadShape::distance(const Vector3& p) const {
    float d = skin(p);
    // What covers the skin is nowhere thicker.
    if (d < 60) {
        const Vector3 even = symmetric(p);
        d -= scalp(p).thickness + beard(even).thickness + 0.7F * brow(even);
        if (p.y < -120) d -= 4 * smoothstep(-4, 4, clothField(p));
    }
    return joined(d, locks(p), 3);
}

Vector3 HeadShape::skinColour(const Vector3& p) const {
    const Vector3 q = mirrored(p);
    Vector3 colour = t_.skin;
    const auto tint = [&](float amount, const Vector3& by) {
        colour = colour * mix({1, 1, 1}, by, amount);
    };
    const float mottle = noise(p * 0.06F, t_.noiseSeed) + 0.6F * noise(p * 0.17F, t_.noiseSeed + 1);
    tint((mottle - 0.8F), {.x = 0.93F, .y = 0.86F, .z = 0.85F});
    const bool isFront = p.z > -45;
    if (!isFront) {
        // Ears and what is behind them.
        if (q.x > t_.skullWidth - 2 && std::abs(p.y) < 50) {
            tint(0.8F * t_.flush, {.x = 1, .y = 0.82F, .z = 0.80F});
        }
        return colour;
    }
    const float red = t_.flush;
    tint(red * bump(length(q - Vector3{.x = 40, .y = -30, .z = -8}) / 34),
         {.x = 1.02F, .y = 0.80F, .z = 0.78F});
    tint(red * bump(length(p - Vector3{.x = 0, .y = t_.noseBaseY + 5, .z = t_.noseTipZ - 4}) / 20),
         {.x = 1.02F, .y = 0.80F, .z = 0.78F});
    tint(0.6F * bump((p.y - 45) / 34), {.x = 1, .y = 1.03F, .z = 0.98F});
    // Around the eyes, and under them.
    const float eyeDistance = std::sqrt(square((q.x - t_.eyeX) / 21) + square((p.y + 1) / 14));
    tint(bump(eyeDistance / 1.2F) * (0.2F + 0.6F * t_.age), {.x = 0.84F, .y = 0.74F, .z = 0.76F});
    tint(bump((q.x - t_.eyeX + 3) / 15) * bump((p.y + 14) / 7) * (0.25F + 0.6F * t_.age),
         {.x = 0.80F, .y = 0.74F, .z = 0.78F});
    tint(t_.eyeShadow * bump((q.x - t_.eyeX) / 19) * bump((p.y - 8) / 10),
         {.x = 0.45F, .y = 0.36F, .z = 0.42F});
    // Lines of age.
    const float brows =
        bump((p.y - 42) / 18) * smoothstep(48, 25, q.x) * smoothstep(0.3F, 1, t_.age);
    tint(0.3F * brows *
             smoothstep(0.55F, 1,
                        std::sin((p.y + 0.012F * q.x * q.x + 5 * noise(p * 0.05F, 3)) * 0.85F)),
         {.x = 0.55F, .y = 0.48F, .z = 0.46F});
    tint(bump(cheekFold(q) / 3.5F) * (0.05F + 0.25F * t_.age),
         {.x = 0.62F, .y = 0.52F, .z = 0.50F});
    const float crow =
        bump((q.x - t_.eyeX - 20) / 9) * bump((p.y) / 12) * smoothstep(0.35F, 1, t_.age);
    tint(0.35F * crow *
             smoothstep(0.3F, 1,
                        std::sin((p.y * 1.2F + 0.25F * (q.x - 50) * (p.y > 0 ? 1.F : -1.F)))),
         {.x = 0.6F, .y = 0.5F, .z = 0.5F});
    // The shade of a shaved beard.
    if (t_.masculine > 0.5F) {
        const float shaved = smoothstep(t_.noseBaseY + 2, t_.noseBaseY - 12, p.y) *
                             smoothstep(62, 40, q.x - 0.3F * p.z);
        tint(shaved * (t_.masculine - 0.4F) * 0.8F, {.x = 0.80F, .y = 0.84F, .z = 0.90F});
    }
    if (t_.freckles > 0) {
        const float spots = smoothstep(0.72F, 0.85F, noise(p * 0.55F, t_.noiseSeed + 9));
        tint(0.8F * t_.freckles * spots * bump((p.y + 14) / 34) * smoothstep(60, 45, q.x),
             {.x = 0.62F, .y = 0.47F, .z = 0.38F});
    }
    for (const PersonTraits::Mole& mole : t_.moles) {
        const float away = std::hypot(p.x - mole.x, p.y - mole.y) / mole.radius;
        tint(0.7F * smoothstep(1.5F, 0.5F, away), {.x = 0.35F, .y = 0.24F, .z = 0.2F});
    }
    // Lips, and the mouth behind them.
    const float lipZ = p.z + p.x * p.x * 0.0165F - t_.mouthZ;
    if (lipZ > -16 && q.x < t_.mouthWidth + 3) {
        const float y = p.y - mouthLine(p.x);
        const float inside = std::min(upperLip(p.x) + 0.6F - y, y + lowerLip(p.x) + 0.6F);
        const float lip =
            smoothstep(-0.5F, 1.6F, inside) * smoothstep(t_.mouthWidth + 1, t_.mouthWidth - 3, q.x);
        const Vector3 plain{.x = 0.84F, .y = 0.60F, .z = 0.62F};
        const Vector3 painted{.x = 0.88F, .y = 0.30F, .z = 0.34F};
        tint(0.92F * lip, mix(plain, painted, std::max(0.F, t_.lipColour)));
        const float within = smoothstep(1.8F, 0.6F, std::abs(y)) * smoothstep(-3, -7, lipZ);
        tint(within, {.x = 0.30F, .y = 0.16F, .z = 0.15F});
    }
    // Nostrils.
    const Vector3 nostril{.x = t_.noseWidth * 0.44F,
                          .y = t_.noseBaseY + 1.4F,
                          .z = t_.noseTipZ - t_.noseTipRadius - 3.5F};
    const Vector3 n = q - nostril;
    tint(smoothstep(1.3F, 0.8F, std::sqrt(square(n.x / 4) + square(n.y / 3.6F) + square(n.z / 6))),
         {.x = 0.28F, .y = 0.2F, .z = 0.2F});
    // Lashes along the lids' edges, and the fold.
    const float dx = q.x - t_.eyeX;
    if (std::abs(dx) < t_.eyeWidth + 3 && std::abs(p.y) < 16) {
        const LidEdges edges = lids(dx);
        const float within = smoothstep(t_.eyeWidth + 2.5F, t_.eyeWidth - 2, std::abs(dx));
        const float dark = 0.75F + 0.25F * (1 - t_.masculine);
        const float up = p.y - edges.upper;
        tint(dark * within * smoothstep(-2.5F, -0.4F, up) * smoothstep(2.1F, 0.7F, up),
             {.x = 0.20F, .y = 0.15F, .z = 0.14F});
        const float down = edges.lower - p.y;
        tint(0.5F * within * smoothstep(-2, -0.2F, down) * smoothstep(1.5F, 0.5F, down),
             {.x = 0.42F, .y = 0.30F, .z = 0.29F});
        tint(0.40F * within * bump((p.y - edges.crease) / 1.5F),
             {.x = 0.55F, .y = 0.42F, .z = 0.40F});
    }
    return colour;
}

HeadShape::Surface HeadShape::surface(const Vector3& point) const {
    const Vector3 p = symmetric(point);
    Surface s{.colour = skinColour(p), .cloth = p.y < -120 ? clothField(p) : -10.F, .gloss = 1};
    const Vector3 q = mirrored(p);
    // Forehead, nose and lips shine most.
    s.gloss +=
        0.9F * bump(length(p - Vector3{.x = 0, .y = t_.noseBaseY + 8, .z = t_.noseTipZ}) / 22) +
        0.5F * bump((p.y - 45) / 40) * smoothstep(55, 20, q.x);
    if (q.x < t_.mouthWidth && std::abs(p.y - t_.mouthY) < 12 && p.z > 0) s.gloss += 0.8F;

    const float brows = brow(p);
    const Cover chin = beard(p);
    const Cover head = scalp(point);
    const float lock = locks(point);
    const float covered = skin(point) - head.thickness - chin.thickness;
    const float locked = smoothstep(4.5F, 0.5F, lock - covered);
    if (locked > 0) s.cloth = std::min(s.cloth, 3 - 8 * locked);
    s.hair = std::max({brows, chin.density, head.density, locked});
    if (brows >= s.hair) {
        s.strandU = q.x * 0.55F - p.y * 0.5F;
        s.strandV = p.y * 0.9F + q.x * 0.25F;
    } else if (chin.density >= s.hair) {
        s.strandU = p.x * 0.9F + p.z * 0.5F;
        s.strandV = p.y * 0.3F - std::abs(p.x) * 0.12F;
    } else {
        // Strands run down from the crown, or away from the parting.
        const float angle = std::atan2(p.x, p.z + 95);
        s.strandU = angle * 42 + 2.5F * noise(p * 0.05F, 2);
        s.strandV = p.y * 0.035F;
        if (t_.hair == HairStyle::sidePart || (isHairLong() && t_.hair != HairStyle::fringe)) {
            s.strandU = p.z * 0.6F - p.y * 0.6F * smoothstep(-25, 5, p.z) + 2 * noise(p * 0.05F, 2);
            s.strandV = p.y * 0.035F + p.x * 0.035F;
        }
        if (t_.hair == HairStyle::curly || t_.hair == HairStyle::buzzed) {
            s.strandU = p.x * 0.5F + p.z * 0.3F;
            s.strandV = p.y * 0.5F - p.z * 0.3F;
        }
    }
    return s;
}

}  // namespace marrowby
