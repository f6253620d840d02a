// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Props.h"

#include <utility>

namespace marrowby {

namespace {

constexpr Vector3 blackPlastic{.x = 0.02F, .y = 0.02F, .z = 0.022F};
constexpr float inch = 0.0254F;

Prop showingStill(PropKind kind, std::uint64_t person, Movement moves, const Sheet& sheet,
                  int pixelsWide = 450) {
    return {.kind = kind,
            .sheet = sheet,
            .moves = std::move(moves),
            .person = person,
            .plays = lookingAround(person, 0.52F, 0),
            .isHandHeld =
                kind == PropKind::print || kind == PropKind::phone || kind == PropKind::tablet,
            .pixelsWide = pixelsWide};
}

}  // namespace

Prop print(std::uint64_t person, Movement moves) {
    return showingStill(PropKind::print, person, std::move(moves),
                        {.width = 0.20F,
                         .height = 0.26F,
                         .border = {.side = 0.008F, .top = 0.008F, .bottom = 0.008F}});
}

Prop cutOut(std::uint64_t person, Movement moves, bool hasEyeHoles) {
    // As wide and high as what the photo shows 0.52 m away: life-size.
    Prop prop = showingStill(
        PropKind::cutOut, person, std::move(moves),
        {.width = 0.277F, .height = 0.369F, .bend = 3, .gloss = 0.015F, .roughness = 0.12F});
    prop.hasEyeHoles = hasEyeHoles;
    return prop;
}

Prop phone(std::uint64_t person, Movement moves) {
    return showingStill(
        PropKind::phone, person, std::move(moves),
        {.width = 0.0715F,
         .height = 0.1467F,
         .cornerRadius = 0.010F,
         .border = {.side = 0.0045F, .top = 0.009F, .bottom = 0.009F},
         .borderColour = blackPlastic,
         .gloss = 0.045F,
         .roughness = 0.01F,
         .display = Display{.pixelPitch = inch / 400, .white = 0.9F, .pulseDepth = 0.25F}},
        260);
}

Prop tablet(std::uint64_t person, Movement moves) {
    return showingStill(PropKind::tablet, person, std::move(moves),
                        {.width = 0.174F,
                         .height = 0.250F,
                         .cornerRadius = 0.008F,
                         .border = {.side = 0.009F, .top = 0.021F, .bottom = 0.021F},
                         .borderColour = blackPlastic,
                         .gloss = 0.04F,
                         .roughness = 0.01F,
                         .display = Display{.pixelPitch = inch / 264, .white = 0.8F}},
                        260);
}

Prop monitor(std::uint64_t person, Movement moves) {
    return showingStill(PropKind::monitor, person, std::move(moves),
                        {.width = 0.336F,
                         .height = 0.597F,
                         .border = {.side = 0.0015F, .top = 0.0015F, .bottom = 0.0015F},
                         .borderColour = blackPlastic,
                         .gloss = 0.012F,
                         .roughness = 0.20F,
                         .display = Display{.pixelPitch = inch / 93, .white = 0.55F}});
}

Prop dimmed(Prop prop) {
    if (prop.sheet.display) prop.sheet.display->white *= 0.2F;
    return prop;
}

Prop bent(Prop prop, float bend) {
    prop.kind = PropKind::bentPrint;
    prop.sheet.bend = bend;
    return prop;
}

Prop framed(Prop prop) {
    prop.sheet.border = {.side = 0.02F, .top = 0.02F, .bottom = 0.02F};
    prop.sheet.borderColour = {.x = 0.05F, .y = 0.03F, .z = 0.02F};
    return prop;
}

Prop enlarged(Prop prop, float scale) {
    prop.sheet.width *= scale;
    prop.sheet.height *= scale;
    prop.kind = PropKind::poster;
    prop.isHandHeld = false;
    return prop;
}

Prop coarse(Prop prop) {
    if (prop.sheet.display) prop.sheet.display->pixelPitch = inch / 82;
    return prop;
}

Prop showing(Prop prop, Performance plays, bool isReplay) {
    prop.plays = std::move(plays);
    prop.isReplay = isReplay;
    return prop;
}

}  // namespace marrowby
