// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/Vector3.h"

#include <cstdint>
#include <vector>

namespace marrowby {

/// What distinguishes people. Lengths in millimetres about the middle between the eyes: x to the
/// person's left, y up, z to the front; widths are half widths. Proportions vary about those of an
/// average adult by more than people's do, so that small pictures can be told apart.
struct PersonTraits {
    enum class HairStyle { bald, crown, buzzed, shortCut, sidePart, curly, fringe, bob, longHair };
    enum class BeardStyle { none, stubble, moustache, goatee, full };
    enum class GlassesStyle { none, round, square, wide };

    explicit PersonTraits(std::uint64_t seed);

    // Numbers for noise, moles and the like.
    std::uint32_t noiseSeed;
    // 0…1.
    float masculine;
    float age;

    float skullWidth;
    float skullTop;
    float skullDepth;
    float foreheadSlope;
    float cheekWidth;
    float cheekFullness;
    float cheekBone;
    float jawWidth;
    float jawY;
    float chinY;
    float chinWidth;
    float chinZ;
    float neckRadius;
    float shoulderWidth;
    float earSize;
    float earTilt;
    float asymmetry;

    float eyeX;
    float eyeRadius;
    float eyeOpening;
    float eyeWidth;
    float eyeTilt;
    float eyeDepth;
    float eyeHood;
    float browY;
    float browThickness;
    float browTilt;
    float browArch;
    float browGap;
    float browEnd;
    float browDensity;
    float browRidge;

    float noseBaseY;
    float noseTipZ;
    float noseTipRise;
    float noseTipRadius;
    float noseWidth;
    float bridgeWidth;
    float bridgeZ;
    float noseBump;
    float noseBend;

    float mouthY;
    float mouthWidth;
    float mouthZ;
    float mouthCurve;
    float upperLip;
    float lowerLip;
    float lipColour;

    /// In linear light.
    Vector3 skin;
    float flush;
    float eyeShadow;
    float freckles;
    Vector3 hairColour;
    float grey;
    Vector3 irisColour;
    Vector3 clothColour;
    bool isCollared;

    HairStyle hair;
    float hairlineY;
    float hairRecess;
    float hairThickness;
    float partX;
    BeardStyle beard;
    float beardLength;
    GlassesStyle glasses;
    float rimWidth;
    Vector3 rimColour;

    struct Mole {
        float x;
        float y;
        float radius;
    };
    std::vector<Mole> moles;
};

}  // namespace marrowby
