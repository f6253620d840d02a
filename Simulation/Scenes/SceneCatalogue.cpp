// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneCatalogue.h"

#include "Simulation/People/Person.h"
#include "Simulation/Scenes/Chance.h"
#include "Simulation/Scenes/Props.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace marrowby {

namespace {

constexpr TimeInterval slow{5};
constexpr TimeInterval quick{1.6};

/// Another person than this one.
std::uint64_t besides(std::uint64_t person, std::size_t which = 1) {
    const auto people = distinctPeople();
    const std::uint64_t other = people[which];
    return other != person ? other : people[0];
}

Placement at(float x, float y, float z, float yaw = 0, float pitch = 0, float roll = 0) {
    return {.position = {.x = x, .y = y, .z = z}, .yaw = yaw, .pitch = pitch, .roll = roll};
}

/// What differs from one take of a scene to the next.
struct Take {
    std::uint64_t person = 0;
    /// Of how hands and heads tremble.
    std::uint64_t seed = 0;
    /// Times every distance from the camera.
    float distance = 1;

    Take(std::uint64_t shown, std::uint64_t number) : person(shown), seed(shown) {
        if (number == 0) return;
        Chance chance(shown * 7919 + number);
        seed = chance.next() >> 1U;
        distance = static_cast<float>(chance.between(0.88, 1.12));
    }

    [[nodiscard]] Movement held(float metres) const {
        return Movement(at(0, 0.01F, metres * distance)).tremble(seed);
    }
    /// Turned and moved to appear alive.
    [[nodiscard]] Movement turned(float metres) const {
        return held(metres).sway(at(0.02F, 0.01F, 0.01F, 0.45F, 0.12F), TimeInterval(3.2));
    }
    [[nodiscard]] Movement moved(float metres) const {
        return held(metres)
            .sway(at(0.04F, 0, 0), quick)
            .sway(at(0, 0.02F, 0.03F, 0, 0, 0.12F), TimeInterval(2.3));
    }
    [[nodiscard]] Performance living(float metres = 0.55F, float yaw = 0.12F) const {
        return lookingAround(seed, metres * distance, yaw);
    }
};

std::vector<Scene> living(const Take& take) {
    const std::uint64_t person = take.person;
    std::vector<Scene> scenes;
    const auto alone = [&](std::string name, std::string tells, LightKind kind, Performance plays) {
        scenes.push_back({.name = std::move(name),
                          .tells = std::move(tells),
                          .light = kind,
                          .actors = {{person, std::move(plays)}}});
    };
    using enum LightKind;
    for (const LightKind kind : {normal, dark, backlit, oneSided, flicker}) {
        const std::string light(name(kind));
        alone("live-" + light, "somebody in front of the camera, light: " + light, kind,
              take.living());
    }
    alone("live-near", "a face that fills the picture", normal, take.living(0.33F));
    alone("live-far", "somebody in the middle of the room", normal, take.living(1.2F));
    alone("live-still", "somebody who waits", normal, take.living(0.55F, 0));
    alone("live-turning", "the head turns far", normal, take.living(0.55F, 0.5F));
    alone(
        "live-hasty", "the head is shaken, in weak light", dark,
        acting(Movement(at(0, 0, 0.6F)).sway(at(0.05F, 0, 0, 0.4F), TimeInterval(0.7)), take.seed));
    alone("live-comes-back", "somebody sits down", normal,
          acting(Movement(at(1.2F, -0.15F, 1.3F, -0.6F))
                     .moveTo(at(0.1F, -0.1F, 0.75F, -0.1F), TimeInterval(1.2))
                     .moveTo(at(0, 0, 0.55F), TimeInterval(0.8)),
                 take.seed));
    scenes.back().beginning = TimeInterval(0.5);
    scenes.push_back({.name = "empty-room", .tells = "nobody", .light = normal});
    scenes.push_back(
        {.name = "walks-past",
         .tells = "somebody goes through the room behind",
         .light = normal,
         .actors = {{person, acting(Movement(at(-1.3F, -0.10F, 1.2F, 1.2F))
                                        .moveTo(at(1.3F, -0.10F, 1.2F, 1.2F), TimeInterval(3.5)),
                                    person)}}});
    scenes.push_back({.name = "two-people",
                      .tells = "somebody looks over a shoulder",
                      .light = normal,
                      .actors = {{person, take.living()},
                                 {besides(person), acting(Movement(at(0.28F, -0.08F, 0.95F, -0.1F))
                                                              .sway(at(0.03F, 0.01F, 0), slow),
                                                          person + 7)}}});
    return scenes;
}

std::vector<Scene> attacks(const Take& take) {
    const std::uint64_t person = take.person;
    std::vector<Scene> scenes;
    const auto shown = [&](std::string name, std::string tells, Prop prop,
                           LightKind kind = LightKind::normal) {
        scenes.push_back({.name = std::move(name),
                          .tells = std::move(tells),
                          .light = kind,
                          .props = {std::move(prop)}});
    };
    shown("print-flat", "a photo on paper, held still", print(person, take.held(0.36F)));
    shown("print-moved", "the photo moved about", print(person, take.moved(0.36F)));
    shown("print-turned", "the photo turned to and fro", print(person, take.turned(0.36F)));
    shown("print-bent", "the photo bent to a face's shape",
          bent(print(person, take.turned(0.36F)), 7));
    shown("print-large", "a poster whose edges are out of the picture",
          enlarged(print(person, take.held(0.36F)), 2.6F));
    shown("print-dark", "the photo in weak light", print(person, take.held(0.36F)),
          LightKind::dark);

    // Worn as a mask: eyes over eyes, and both moved alike.
    const auto worn = [&](std::string name, std::string tells, const Placement& nod,
                          TimeInterval period, bool hasEyeHoles) {
        scenes.push_back(
            {.name = std::move(name),
             .tells = std::move(tells),
             .light = LightKind::normal,
             .actors = {{besides(person, 2),
                         acting(Movement(at(0, 0.02F, 0.56F)).sway(nod, period), take.seed)}},
             .props = {cutOut(person,
                              Movement(at(0, -0.002F, 0.47F)).sway(nod, period).tremble(take.seed),
                              hasEyeHoles)}});
    };
    const Placement nod = at(0.006F, 0.003F, 0, 0.05F, 0.03F);
    worn("cut-out", "a cut-out face before another's", nod, slow, false);
    worn("cut-out-eyes", "a cut-out face with holes for the eyes, before another's", nod, slow,
         true);
    worn("cut-out-worn-turned", "a cut-out face with holes for the eyes, worn and turned",
         at(0.012F, 0.004F, 0, 0.25F, 0.05F), TimeInterval(3), true);
    // Held up from behind.
    shown("cut-out-held", "a cut-out face held still", cutOut(person, take.held(0.47F), false));
    shown("cut-out-moved", "a cut-out face moved about", cutOut(person, take.moved(0.47F), false));
    shown("cut-out-turned", "a cut-out face turned to and fro",
          cutOut(person, take.turned(0.47F), false));

    for (const bool isReplay : {false, true}) {
        const std::string how = isReplay ? "-replay" : "-photo";
        const std::string what = isReplay ? "a video of a moving head on " : "a photo on ";
        const auto playing = [&](Prop prop, float distance = 0.52F) {
            return showing(std::move(prop),
                           lookingAround(take.seed + 11, distance, isReplay ? 0.3F : 0), isReplay);
        };
        shown("phone" + how, what + "a phone", playing(phone(person, take.held(0.19F))));
        shown("phone-turned" + how, what + "a phone turned to and fro",
              playing(phone(person, take.turned(0.20F))));
        shown("phone-dark" + how, what + "a phone in weak light",
              playing(dimmed(phone(person, take.held(0.19F)))), LightKind::dark);
        shown("tablet" + how, what + "a tablet", playing(tablet(person, take.held(0.36F))));
        shown("monitor" + how, what + "a monitor without a visible edge",
              playing(monitor(person, take.held(0.45F)), 0.85F));
        shown("monitor-near" + how, what + "a coarse monitor so near that its pixels beat",
              playing(coarse(monitor(person, take.held(0.27F))), 1.05F));
    }
    shown("phone-glare", "a photo on a phone that mirrors the lamp",
          phone(person, take.held(0.19F).sway(at(0, 0, 0, 0.06F, 0.04F), quick)));
    scenes.back().props.front().moves = Movement(at(0, 0.01F, 0.19F, -0.20F, -0.27F))
                                            .tremble(take.seed)
                                            .sway(at(0, 0, 0, 0.08F, 0.05F), slow);
    return scenes;
}

/// Likely to be denied wrongly: straight edges about the head, places and movements that are rare
/// at a desk.
std::vector<Scene> difficult(const Take& take) {
    std::vector<Scene> scenes;
    Chance chance(take.seed + 3);
    const auto around = [&](Backdrop backdrop, std::string name, std::string tells,
                            Performance plays, TimeInterval beginning = TimeInterval(9)) {
        const bool hasDesk = backdrop == Backdrop::desk || chance.between(0, 1) < 0.4;
        scenes.push_back({.name = std::move(name),
                          .tells = std::move(tells),
                          .light = LightKind::normal,
                          .actors = {{take.person, std::move(plays)}},
                          .backdrop = backdrop,
                          .hasDesk = hasDesk,
                          .beginning = beginning});
    };
    const auto anyBackdrop = [&] { return static_cast<Backdrop>(1 + chance.next() % 7); };
    for (const Backdrop backdrop :
         {Backdrop::curtain, Backdrop::window, Backdrop::door, Backdrop::shelf, Backdrop::picture,
          Backdrop::monitor, Backdrop::desk}) {
        const std::string what(name(backdrop));
        around(backdrop, "live-before-" + what, "straight edges behind the head: " + what,
               take.living(static_cast<float>(chance.between(0.45, 0.75))));
    }
    const auto nods = [&] { return static_cast<float>(chance.between(0.35, 0.55)); };
    around(anyBackdrop(), "live-bowed", "a bowed head is lifted",
           acting(Movement(at(0, 0.05F, 0.55F * take.distance, 0, nods()))
                      .stay(TimeInterval(0.3))
                      .moveTo(at(0, 0.02F, 0.55F * take.distance), TimeInterval(0.7)),
                  take.seed),
           TimeInterval(0.3));
    around(anyBackdrop(), "live-swaying", "somebody sways to and fro",
           acting(Movement(at(0, 0.02F, 0.55F * take.distance))
                      .sway(at(0.06F, 0.004F, 0.01F, 0.03F, 0, 0.06F), TimeInterval(2.6)),
                  take.seed));
    const float side = chance.between(0, 1) < 0.5 ? -1.0F : 1.0F;
    const auto beside = static_cast<float>(chance.between(0.28, 0.34));
    scenes.push_back(
        {.name = "live-edge",
         .tells = "a face that reaches over the picture's edge",
         .light = LightKind::normal,
         .actors = {{take.person, acting(Movement(at(side * beside, 0.02F, 0.5F))
                                             .sway(at(0.006F, 0, 0.01F, 0.12F), TimeInterval(3)),
                                         take.seed)}}});
    // Turns the head when asked, which is with the camera's first picture.
    const float way = chance.between(0, 1) < 0.5 ? -1.0F : 1.0F;
    const Placement home = at(0, 0.02F, 0.55F * take.distance);
    const TimeInterval turning(0.55 * chance.between(0.85, 1.2));
    around(chance.between(0, 1) < 0.5 ? Backdrop::furniture : anyBackdrop(), "live-asked",
           "somebody turns the head as asked",
           acting(Movement(home)
                      .stay(TimeInterval(chance.between(0.25, 0.6)))
                      .moveTo(home + at(0, 0, 0, way * 0.30F), turning)
                      .moveTo(home, turning),
                  take.seed),
           TimeInterval(0));
    scenes.push_back({.name = "print-framed",
                      .tells = "a photo in a wooden frame",
                      .light = LightKind::normal,
                      .props = {framed(print(take.person, take.held(0.38F)))}});
    return scenes;
}

}  // namespace

std::vector<Scene> sceneCatalogue(std::uint64_t person, std::uint64_t number) {
    const Take take(person, number);
    std::vector<Scene> scenes = living(take);
    std::ranges::move(attacks(take), std::back_inserter(scenes));
    std::ranges::move(difficult(take), std::back_inserter(scenes));
    for (Scene& scene : scenes)
        scene.seed = take.seed;
    return scenes;
}

std::optional<Scene> sceneNamed(std::string_view name, std::uint64_t person, std::uint64_t take) {
    auto scenes = sceneCatalogue(person, take);
    const auto found = std::ranges::find(scenes, name, &Scene::name);
    if (found == scenes.end()) return std::nullopt;
    return std::move(*found);
}

}  // namespace marrowby
