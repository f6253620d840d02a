// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneLight.h"

#include "UnlockCore/Foundation/Fatal.h"

namespace marrowby {

namespace {

/// The same light, so much stronger.
SceneLight times(SceneLight light, float strength) {
    light.people.keyStrength *= strength;
    light.people.ambient = light.people.ambient * strength;
    light.people.backlight *= strength;
    light.room *= strength;
    light.windowBehind *= strength;
    light.source *= strength;
    return light;
}

}  // namespace

std::string_view name(LightKind kind) {
    switch (kind) {
        case LightKind::normal:
            return "normal";
        case LightKind::dark:
            return "dark";
        case LightKind::backlit:
            return "backlit";
        case LightKind::oneSided:
            return "one-sided";
        case LightKind::flicker:
            return "flicker";
    }
    fatal("not a kind of light");
}

SceneLight light(LightKind kind) {
    SceneLight light;
    switch (kind) {
        case LightKind::normal:
            return light;
        case LightKind::dark:
            // A lamp somewhere else in the room.
            light.people.keyColour = {.x = 1, .y = 0.86F, .z = 0.66F};
            light.people.ambient = {.x = 0.30F, .y = 0.27F, .z = 0.24F};
            return times(light, 0.035F);
        case LightKind::backlit:
            light.people.keyStrength = 0.12F;
            light.people.ambient = {.x = 0.50F, .y = 0.52F, .z = 0.56F};
            light.people.backlight = 0.9F;
            light.windowBehind = 1.6F;
            light.room = 0.35F;
            light.source = 5;
            return light;
        case LightKind::oneSided:
            light.people.keyDirection = {.x = -1, .y = -0.15F, .z = -0.25F};
            light.people.keyStrength = 0.95F;
            light.people.ambient = {.x = 0.10F, .y = 0.10F, .z = 0.11F};
            light.room = 0.3F;
            return light;
        case LightKind::flicker:
            light.people.keyColour = {.x = 0.96F, .y = 1, .z = 0.93F};
            light.flickerDepth = 0.30F;
            // Bright, so that the shutter is short and does not even it out.
            return times(light, 3);
    }
    fatal("not a kind of light");
}

}  // namespace marrowby
