#include "Rehearsal/Scenes/SceneCatalogue.h"

#include "Rehearsal/People/Person.h"
#include "Rehearsal/Scenes/Props.h"

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

Movement held(float distance, std::uint64_t seed) {
    return Movement(at(0, 0.01F, distance)).tremble(seed);
}

/// Turned to and fro, and moved about, as somebody does who hopes to look alive.
Movement turned(float distance, std::uint64_t seed) {
    return held(distance, seed).sway(at(0.02F, 0.01F, 0.01F, 0.45F, 0.12F), TimeInterval(3.2));
}

Movement moved(float distance, std::uint64_t seed) {
    return held(distance, seed)
        .sway(at(0.04F, 0, 0), quick)
        .sway(at(0, 0.02F, 0.03F, 0, 0, 0.12F), TimeInterval(2.3));
}

std::vector<Scene> living(std::uint64_t person) {
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
              lookingAround(person));
    }
    alone("live-near", "a face that fills the picture", normal, lookingAround(person, 0.33F));
    alone("live-far", "somebody in the middle of the room", normal, lookingAround(person, 1.2F));
    alone("live-still", "somebody who waits", normal, lookingAround(person, 0.55F, 0));
    alone("live-turning", "the head turns far", normal, lookingAround(person, 0.55F, 0.5F));
    alone("live-hasty", "the head is shaken, in weak light", dark,
          acting(Movement(at(0, 0, 0.6F)).sway(at(0.05F, 0, 0, 0.4F), TimeInterval(0.7)), person));
    alone("live-comes-back", "somebody sits down", normal,
          acting(Movement(at(1.2F, -0.15F, 1.3F, -0.6F))
                     .moveTo(at(0.1F, -0.1F, 0.75F, -0.1F), TimeInterval(1.2))
                     .moveTo(at(0, 0, 0.55F), TimeInterval(0.8)),
                 person));
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
                      .actors = {{person, lookingAround(person)},
                                 {besides(person), acting(Movement(at(0.28F, -0.08F, 0.95F, -0.1F))
                                                              .sway(at(0.03F, 0.01F, 0), slow),
                                                          person + 7)}}});
    return scenes;
}

std::vector<Scene> attacks(std::uint64_t person) {
    std::vector<Scene> scenes;
    const auto shown = [&](std::string name, std::string tells, Prop prop,
                           LightKind kind = LightKind::normal) {
        scenes.push_back({.name = std::move(name),
                          .tells = std::move(tells),
                          .light = kind,
                          .props = {std::move(prop)}});
    };
    shown("print-flat", "a photo on paper, held still", print(person, held(0.36F, person)));
    shown("print-moved", "the photo moved about", print(person, moved(0.36F, person)));
    shown("print-turned", "the photo turned to and fro", print(person, turned(0.36F, person)));
    shown("print-bent", "the photo bent to a face's shape",
          bent(print(person, turned(0.36F, person)), 7));
    shown("print-large", "a poster whose edges are out of the picture",
          enlarged(print(person, held(0.36F, person)), 2.6F));
    shown("print-dark", "the photo in weak light", print(person, held(0.36F, person)),
          LightKind::dark);

    // Worn as a mask: eyes over eyes, and both moved alike.
    const Placement nod = at(0.006F, 0.003F, 0, 0.05F, 0.03F);
    for (const bool hasEyeHoles : {false, true}) {
        scenes.push_back(
            {.name = hasEyeHoles ? "cut-out-eyes" : "cut-out",
             .tells = hasEyeHoles ? "a cut-out face with holes for the eyes, before another's"
                                  : "a cut-out face before another's",
             .light = LightKind::normal,
             .actors = {{besides(person, 2),
                         acting(Movement(at(0, 0.02F, 0.56F)).sway(nod, slow), person)}},
             .props = {cutOut(person,
                              Movement(at(0, -0.002F, 0.47F)).sway(nod, slow).tremble(person),
                              hasEyeHoles)}});
    }

    for (const bool isReplay : {false, true}) {
        const std::string how = isReplay ? "-replay" : "-photo";
        const std::string what = isReplay ? "a video of a moving head on " : "a photo on ";
        const auto playing = [&](Prop prop, float distance = 0.52F) {
            return showing(std::move(prop),
                           lookingAround(person + 11, distance, isReplay ? 0.3F : 0), isReplay);
        };
        shown("phone" + how, what + "a phone", playing(phone(person, held(0.19F, person))));
        shown("phone-turned" + how, what + "a phone turned to and fro",
              playing(phone(person, turned(0.20F, person))));
        shown("phone-dark" + how, what + "a phone in weak light",
              playing(dimmed(phone(person, held(0.19F, person)))), LightKind::dark);
        shown("tablet" + how, what + "a tablet", playing(tablet(person, held(0.36F, person))));
        shown("monitor" + how, what + "a monitor without a visible edge",
              playing(monitor(person, held(0.45F, person)), 0.85F));
        shown("monitor-near" + how, what + "a coarse monitor so near that its pixels beat",
              playing(coarse(monitor(person, held(0.27F, person))), 1.05F));
    }
    shown("phone-glare", "a photo on a phone that mirrors the lamp",
          phone(person, held(0.19F, person).sway(at(0, 0, 0, 0.06F, 0.04F), quick)));
    scenes.back().props.front().moves = Movement(at(0, 0.01F, 0.19F, -0.20F, -0.27F))
                                            .tremble(person)
                                            .sway(at(0, 0, 0, 0.08F, 0.05F), slow);
    return scenes;
}

}  // namespace

std::vector<Scene> sceneCatalogue(std::uint64_t person) {
    std::vector<Scene> scenes = living(person);
    std::ranges::move(attacks(person), std::back_inserter(scenes));
    for (Scene& scene : scenes)
        scene.seed = person;
    return scenes;
}

std::optional<Scene> sceneNamed(std::string_view name, std::uint64_t person) {
    auto scenes = sceneCatalogue(person);
    const auto found = std::ranges::find(scenes, name, &Scene::name);
    if (found == scenes.end()) return std::nullopt;
    return std::move(*found);
}

}  // namespace marrowby
