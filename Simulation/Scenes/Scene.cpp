// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Scene.h"

#include "Simulation/Scenes/Performance.h"
#include "UnlockCore/Foundation/Fatal.h"

#include <utility>

namespace marrowby {

std::string_view name(PropKind kind) {
    switch (kind) {
        case PropKind::print:
            return "print";
        case PropKind::bentPrint:
            return "bent-print";
        case PropKind::poster:
            return "poster";
        case PropKind::cutOut:
            return "cut-out";
        case PropKind::phone:
            return "phone";
        case PropKind::tablet:
            return "tablet";
        case PropKind::monitor:
            return "monitor";
    }
    fatal("not a kind of prop");
}

Performance acting(Movement movement, std::uint64_t seed) {
    movement.tremble(seed);
    return [movement = std::move(movement), seed](TimeInterval time) {
        Stance stance{.head = movement.at(time)};
        stance.expression.blink = blinkAt(time, seed);
        // The eyes stay on the camera.
        stance.expression.gazeYaw = -stance.head.yaw;
        stance.expression.gazePitch = -stance.head.pitch;
        return stance;
    };
}

Performance lookingAround(std::uint64_t seed, float distance, float yaw) {
    Movement movement({.position = {.x = 0, .y = 0.02F, .z = distance}});
    movement.sway({.position = {.x = 0.006F, .y = 0, .z = 0.01F}, .yaw = yaw, .pitch = 0.03F},
                  TimeInterval(3));
    return acting(movement, seed);
}

}  // namespace marrowby
