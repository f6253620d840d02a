// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/RandomScene.h"

#include "Simulation/Scenes/Props.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace marrowby {

namespace {

/// As many small as large ones.
float evenly(Chance& chance, double low, double high) {
    return static_cast<float>(std::exp(chance.between(std::log(low), std::log(high))));
}

bool happens(Chance& chance, double probability) {
    return chance.between(0, 1) < probability;
}

Vector3 tint(Chance& chance) {
    const float warm = between(chance, -0.14, 0.14);
    return {.x = 1 + warm, .y = 1 + between(chance, -0.04, 0.04), .z = 1 - warm};
}

/// Somewhere in the picture, turned by up to so much.
Placement somewhere(Chance& chance, float distance, float yaw, float pitch, float roll) {
    return {.position = {.x = distance * between(chance, -0.32, 0.32),
                         .y = distance * between(chance, -0.16, 0.2),
                         .z = distance},
            .yaw = between(chance, -yaw, yaw),
            .pitch = between(chance, -pitch, pitch),
            .roll = between(chance, -roll, roll)};
}

Movement moving(Chance& chance, const Placement& start, float most) {
    Movement movement(start);
    movement.tremble(chance.next());
    if (happens(chance, 0.4)) {
        movement.sway(somewhere(chance, 0.06F, most, most / 2, most / 3),
                      TimeInterval(chance.between(1.5, 5)));
    }
    return movement;
}

/// Now and then with a bowed head, or half out of the picture.
Performance living(Chance& chance, double nearest, double farthest) {
    const float yaw = happens(chance, 0.25) ? 0.75F : 0.3F;
    const float distance = evenly(chance, nearest, farthest);
    Placement start = somewhere(chance, distance, yaw, yaw * 0.6F, 0.2F);
    if (happens(chance, 0.1)) start.pitch = between(chance, 0.2, 0.55);
    if (happens(chance, 0.08)) {
        start.position.x = std::copysign(distance * between(chance, 0.5, 0.68), start.position.x);
    }
    return acting(moving(chance, start, 0.3F), chance.next());
}

/// Not always before the middle of the camera, and not always straight.
Movement held(Chance& chance, float distance) {
    Placement place = somewhere(chance, distance, 0.2F, 0.15F, 0.1F);
    place.position.x *= 0.4F;
    place.position.y *= 0.4F;
    return moving(chance, place, happens(chance, 0.5) ? 0.4F : 0.1F);
}

Prop randomProp(std::uint64_t person, Chance& chance) {
    switch (chance.next() % 9) {
        case 0:
            return print(person, held(chance, evenly(chance, 0.28, 0.6)));
        case 1:
            return bent(print(person, held(chance, evenly(chance, 0.28, 0.5))),
                        between(chance, 3, 8));
        case 2:
            return enlarged(print(person, held(chance, evenly(chance, 0.3, 0.6))),
                            between(chance, 1.5, 3));
        case 3:
            return phone(person, held(chance, evenly(chance, 0.15, 0.3)));
        case 4:
            return tablet(person, held(chance, evenly(chance, 0.25, 0.5)));
        case 5:
            return monitor(person, held(chance, evenly(chance, 0.35, 0.7)));
        case 6:
            return framed(print(person, held(chance, evenly(chance, 0.3, 0.5))));
        case 7:
            return cutOut(person, held(chance, evenly(chance, 0.34, 0.7)), happens(chance, 0.3));
        default:
            return coarse(monitor(person, held(chance, evenly(chance, 0.24, 0.5))));
    }
}

Prop shown(std::uint64_t person, LightKind light, Chance& chance) {
    Prop prop = randomProp(person, chance);
    const bool isScreen = prop.sheet.display.has_value();
    if (isScreen && (light == LightKind::dark || happens(chance, 0.1))) {
        prop = dimmed(std::move(prop));
    }
    const bool isLarge = prop.kind == PropKind::monitor;
    const float distance = evenly(chance, isLarge ? 0.7 : 0.45, isLarge ? 1.1 : 0.7);
    const float yaw = happens(chance, 0.5) ? 0.25F : 0;
    return showing(std::move(prop), lookingAround(chance.next() % 1000, distance, yaw),
                   isScreen && happens(chance, 0.5));
}

}  // namespace

LightKind randomLight(Chance& chance) {
    constexpr std::array kinds{LightKind::normal,   LightKind::normal,  LightKind::normal,
                               LightKind::dark,     LightKind::backlit, LightKind::oneSided,
                               LightKind::oneSided, LightKind::flicker};
    return kinds.at(chance.next() % kinds.size());
}

Backdrop randomBackdrop(Chance& chance) {
    if (happens(chance, 0.4)) return Backdrop::furniture;
    constexpr std::array others{Backdrop::curtain, Backdrop::window,  Backdrop::door,
                                Backdrop::shelf,   Backdrop::picture, Backdrop::monitor,
                                Backdrop::desk};
    return others.at(chance.next() % others.size());
}

Lighting randomLighting(LightKind kind, Chance& chance) {
    Lighting result = light(kind).people;
    result.keyDirection =
        result.keyDirection +
        Vector3{between(chance, -0.7, 0.7), between(chance, -0.5, 0.5), between(chance, -0.3, 0.3)};
    result.keyStrength *= evenly(chance, 0.5, 1.5);
    const Vector3 key = tint(chance);
    const Vector3 around = tint(chance);
    const float strength = evenly(chance, 0.6, 1.6);
    result.keyColour = {result.keyColour.x * key.x, result.keyColour.y * key.y,
                        result.keyColour.z * key.z};
    result.ambient = Vector3{result.ambient.x * around.x, result.ambient.y * around.y,
                             result.ambient.z * around.z} *
                     strength;
    return result;
}

Scene randomScene(std::uint64_t person, std::uint64_t other, Chance& chance) {
    Scene scene{.light = randomLight(chance),
                .backdrop = randomBackdrop(chance),
                .hasDesk = happens(chance, 0.25),
                .seed = chance.next()};
    const double what = chance.between(0, 1);
    if (what < 0.03) return scene;
    if (what < 0.48) {
        scene.actors.push_back({person, living(chance, 0.3, 1.3)});
        if (happens(chance, 0.1)) scene.actors.push_back({other, living(chance, 0.9, 1.4)});
        return scene;
    }
    if (what < 0.57) {
        // A mask before somebody's face, moved with it.
        const float distance = evenly(chance, 0.38, 0.6);
        const float turn = happens(chance, 0.3) ? 0.3F : 0.08F;
        const Placement nod = somewhere(chance, 0.02F, turn, 0.05F, 0.03F);
        const TimeInterval period(chance.between(2, 6));
        const std::uint64_t hand = chance.next();
        const auto at = [](float y, float z) {
            return Movement({.position = {.x = 0, .y = y, .z = z}});
        };
        scene.actors.push_back(
            {other, acting(at(0.02F, distance + 0.09F).sway(nod, period), hand)});
        scene.props.push_back(
            cutOut(person, at(0, distance).sway(nod, period).tremble(hand), happens(chance, 0.5)));
        return scene;
    }
    scene.props.push_back(shown(person, scene.light, chance));
    return scene;
}

}  // namespace marrowby
