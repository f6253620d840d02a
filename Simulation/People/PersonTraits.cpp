// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/PersonTraits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>

namespace marrowby {

namespace {

/// Random numbers from a seed, the same on every system: only the engine is the library's, whose
/// numbers the standard fixes.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    float uniform(float least, float most) {
        // 24 bits, all that a float holds.
        return least + (most - least) * static_cast<float>(engine_() >> 40U) * 0x1p-24F;
    }
    /// Evenly up to three times `step` to either side.
    float around(float mean, float step) { return mean + 3 * step * uniform(-1, 1); }
    /// Evenly up to four times `step` to either side.
    float widely(float mean, float step) { return mean + 4 * step * uniform(-1, 1); }
    bool chance(float probability) { return uniform(0, 1) < probability; }
    /// 0 … count - 1.
    std::size_t pick(std::size_t count) { return engine_() % count; }

  private:
    std::mt19937_64 engine_;
};

/// From light to dark skin, in linear light, evenly to the eye.
Vector3 skinColour(Dice& dice) {
    const float tone = dice.uniform(0, 1);
    const Vector3 light{.x = 0.76F, .y = 0.49F, .z = 0.37F};
    const Vector3 dark{.x = 0.13F, .y = 0.060F, .z = 0.034F};
    const float warm = dice.around(0, 0.035F);
    const auto between = [&](float a, float b, float shift) {
        return a * std::pow(b / a, tone * tone * 0.6F + tone * 0.4F) * (1 + shift);
    };
    return {between(light.x, dark.x, warm), between(light.y, dark.y, 0),
            between(light.z, dark.z, -warm)};
}

constexpr std::array hairColours{
    Vector3{.x = 0.010F, .y = 0.008F, .z = 0.007F}, Vector3{.x = 0.025F, .y = 0.014F, .z = 0.009F},
    Vector3{.x = 0.055F, .y = 0.028F, .z = 0.014F}, Vector3{.x = 0.115F, .y = 0.060F, .z = 0.028F},
    Vector3{.x = 0.300F, .y = 0.190F, .z = 0.085F}, Vector3{.x = 0.210F, .y = 0.065F, .z = 0.020F},
};

constexpr std::array irisColours{
    Vector3{.x = 0.060F, .y = 0.028F, .z = 0.012F}, Vector3{.x = 0.110F, .y = 0.055F, .z = 0.020F},
    Vector3{.x = 0.090F, .y = 0.160F, .z = 0.230F}, Vector3{.x = 0.120F, .y = 0.150F, .z = 0.070F},
    Vector3{.x = 0.150F, .y = 0.170F, .z = 0.180F},
};

}  // namespace

PersonTraits::PersonTraits(std::uint64_t seed) {
    Dice dice(seed);
    noiseSeed = static_cast<std::uint32_t>(dice.pick(std::size_t{1} << 30U));
    masculine = dice.uniform(0, 1);
    age = dice.uniform(0, 1);
    const float m = masculine - 0.5F;

    const float broad = dice.around(1, 0.055F);
    skullWidth = std::clamp(dice.around(75 + 3 * m, 2.6F) * broad, 62.F, 90.F);
    skullTop = dice.around(112, 4);
    skullDepth = dice.around(98, 2.5F);
    foreheadSlope = dice.widely(0, 5) - 6 * m;
    cheekWidth = std::clamp(dice.around(63, 3.2F) * broad, skullWidth * 0.76F, skullWidth * 0.95F);
    cheekFullness = dice.around(1, 2.8F);
    cheekBone = dice.around(0, 2) - m;
    jawWidth =
        std::clamp(dice.widely(50 + 5 * m, 4.5F) * broad, cheekWidth * 0.58F, cheekWidth * 0.97F);
    jawY = dice.widely(-74, 6);
    chinY = dice.widely(-112 - 5 * m, 7.5F);
    chinWidth = std::max(7.F, dice.widely(19 + 6 * m, 4.5F));
    chinZ = dice.widely(0, 4.5F);
    neckRadius = dice.around(49 + 9 * m, 1.6F);
    shoulderWidth = dice.around(170 + 28 * m, 5);
    earSize = dice.around(1, 0.1F);
    earTilt = dice.around(0.45F, 0.14F);
    asymmetry = dice.around(0, 0.007F);

    eyeX = dice.widely(32, 2.3F);
    eyeRadius = dice.widely(12.2F, 0.5F);
    eyeOpening = std::clamp(dice.widely(5.3F - 0.6F * m, 0.75F), 3.2F, 7.6F);
    eyeWidth = std::min(dice.widely(14.6F, 1.1F), eyeX - 10);
    eyeTilt = dice.widely(0.06F, 0.085F);
    eyeDepth = dice.widely(0, 2) + 1.5F * m;
    eyeHood = dice.uniform(0, 1);
    browY = std::max(13.F, dice.widely(20.5F - 3 * m, 2.7F));
    browThickness = std::max(1.6F, dice.widely(4.2F + 2 * m, 1.3F));
    browTilt = dice.widely(0.05F - 0.1F * m, 0.13F);
    browArch = dice.widely(3.5F - 2 * m, 2.2F);
    browGap = dice.widely(11, 2.2F);
    browEnd = dice.around(53, 3);
    browDensity = dice.uniform(0.65F, 1);
    browRidge = dice.around(4 * m, 2);

    noseBaseY = dice.widely(-45, 4.2F);
    noseTipZ = dice.widely(29.5F + 2 * m, 3.6F);
    noseTipRise = dice.widely(6, 3.2F);
    noseTipRadius = dice.widely(8.8F + m, 1.05F);
    noseWidth = dice.widely(18 + 1.6F * m, 1.9F);
    bridgeWidth = std::max(4.F, dice.widely(7.2F + m, 1.4F));
    bridgeZ = dice.widely(3, 2.8F);
    noseBump = dice.widely(0.6F * m, 1);
    noseBend = dice.around(0, 0.8F);

    mouthY = noseBaseY - dice.widely(23, 2.3F);
    chinY = std::min(chinY, mouthY - 27);
    mouthWidth = dice.widely(25.5F, 2.6F);
    mouthZ = dice.widely(15, 2.2F);
    mouthCurve = dice.widely(2.6F, 1.6F);
    upperLip = std::max(2.2F, dice.widely(6 - 1.6F * m, 1.5F));
    lowerLip = std::max(3.5F, dice.widely(8 - 1.2F * m, 1.6F));
    lipColour = dice.uniform(0.15F, 0.9F) * (1 - 0.7F * masculine);

    skin = skinColour(dice);
    flush = dice.uniform(0.2F, 1);
    const float shadow = dice.uniform(-0.5F, 1);
    eyeShadow = masculine < 0.5F ? std::max(0.F, shadow) : 0.15F * std::max(0.F, shadow);
    freckles = dice.chance(0.2F) ? dice.uniform(0.4F, 1) : 0;
    const bool isDark = skin.x < 0.32F;
    hairColour = hairColours[dice.pick(isDark ? 3 : hairColours.size())];
    hairColour = hairColour * dice.uniform(0.7F, 1.3F);
    const float greying = dice.uniform(-0.4F, 1);
    grey = age > 0.55F ? std::clamp(greying * (age - 0.4F) * 2, 0.F, 1.F) : 0;
    irisColour = irisColours[dice.pick(isDark ? 2 : irisColours.size())];
    irisColour = irisColour * dice.uniform(0.8F, 1.25F);
    clothColour = {dice.uniform(0.01F, 0.5F), dice.uniform(0.01F, 0.5F), dice.uniform(0.01F, 0.5F)};
    const float clothGrey = dot(clothColour, {.x = 0.3F, .y = 0.5F, .z = 0.2F});
    clothColour = mix({clothGrey, clothGrey, clothGrey}, clothColour, dice.uniform(0.2F, 0.8F));
    isCollared = dice.chance(0.4F);

    const bool isMan = masculine > 0.5F;
    constexpr std::array manStyles{HairStyle::bald,     HairStyle::crown,    HairStyle::buzzed,
                                   HairStyle::shortCut, HairStyle::shortCut, HairStyle::sidePart,
                                   HairStyle::sidePart, HairStyle::curly};
    constexpr std::array womanStyles{HairStyle::shortCut, HairStyle::curly,    HairStyle::fringe,
                                     HairStyle::bob,      HairStyle::longHair, HairStyle::longHair,
                                     HairStyle::sidePart};
    hair =
        isMan ? manStyles[dice.pick(manStyles.size())] : womanStyles[dice.pick(womanStyles.size())];
    hairlineY = std::clamp(dice.around(58, 5) + (isMan ? 5 * age : 0), 44.F, 74.F);
    hairRecess = isMan ? std::max(0.F, dice.around(8 + 10 * age, 4)) : dice.uniform(0, 5);
    hairThickness = dice.uniform(0.6F, 1.5F);
    partX = dice.chance(0.5F) ? dice.uniform(15, 38) : dice.uniform(-38, -15);

    constexpr std::array beards{BeardStyle::none,    BeardStyle::none,      BeardStyle::goatee,
                                BeardStyle::stubble, BeardStyle::moustache, BeardStyle::moustache,
                                BeardStyle::goatee,  BeardStyle::full,      BeardStyle::full};
    const BeardStyle someBeard = beards[dice.pick(beards.size())];
    beard = isMan ? someBeard : BeardStyle::none;
    beardLength = dice.uniform(0.5F, 1.6F);
    constexpr std::array frames{GlassesStyle::round, GlassesStyle::square, GlassesStyle::wide};
    const GlassesStyle someFrame = frames[dice.pick(frames.size())];
    glasses = dice.chance(0.5F) ? someFrame : GlassesStyle::none;
    rimWidth = dice.chance(0.4F) ? dice.uniform(0.7F, 1.0F) : dice.uniform(1.3F, 2.8F);
    rimColour = dice.chance(0.6F)
                    ? Vector3{.x = 0.012F, .y = 0.012F, .z = 0.014F}
                    : Vector3{dice.uniform(0.03F, 0.3F), dice.uniform(0.02F, 0.12F), 0.03F};

    const std::size_t moleCount = dice.pick(3);
    for (std::size_t i = 0; i < moleCount; ++i) {
        moles.push_back({.x = dice.uniform(-48, 48),
                         .y = dice.uniform(-100, 45),
                         .radius = dice.uniform(0.7F, 1.5F)});
    }
}

}  // namespace marrowby
