// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/SceneTakes.h"

#include "Simulation/People/Person.h"
#include "Simulation/Scenes/Chance.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Scenes/SceneFilm.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <utility>

namespace marrowby {

namespace {

/// Shared by all takes: only one is filmed at a time.
struct Studio {
    Cast cast = {};
    std::unique_ptr<SceneFilm> film = nullptr;
};

/// Films from the take's first picture on.
struct Shoot {
    Scene scene;
    std::shared_ptr<Studio> studio;
    int width = 0;
    int height = 0;
    double framesPerSecond = 0;
    TimeInterval begin{};

    std::shared_ptr<const PixelBuffer> picture(std::size_t index) {
        if (index == 0) {
            Chance chance(scene.seed + 5);
            begin = TimeInterval(chance.between(0, scene.beginning.count()));
            studio->film = std::make_unique<SceneFilm>(scene, studio->cast);
        }
        const TimeInterval running(static_cast<double>(index) / framesPerSecond);
        return studio->film
            ->shoot({.at = begin + running,
                     .running = running,
                     .frameTime = TimeInterval(1 / framesPerSecond),
                     .width = width,
                     .height = height})
            .picture;
    }
};

}  // namespace

std::vector<Take> takesOf(const SceneTakes& wanted) {
    const auto people = distinctPeople();
    const auto studio = std::make_shared<Studio>();
    std::vector<Take> takes;
    for (std::uint64_t take = wanted.first; take < wanted.first + wanted.count; ++take) {
        // A different person in every scene of a take.
        std::size_t next = take * 7;
        for (const Scene& listed : sceneCatalogue(people.front())) {
            next += 31;
            const bool isAttack = !listed.props.empty();
            const bool isAsked = std::ranges::any_of(wanted.scenes, [&](const std::string& name) {
                return listed.name.starts_with(name);
            });
            if (!isAsked || (!isAttack && !listed.name.starts_with("live-"))) continue;
            const std::uint64_t person = people[next % people.size()];
            auto scene = sceneNamed(listed.name, person, take);
            if (!scene) continue;
            const auto shoot = std::make_shared<Shoot>(Shoot{
                *std::move(scene), studio, wanted.width, wanted.height, wanted.framesPerSecond});
            const Take::Label label{
                .purpose = isAttack ? Take::Purpose::attack : Take::Purpose::genuine,
                .attack = isAttack ? std::string(name(listed.props.front().kind)) : "",
                .person = std::to_string(person),
                .name = listed.name + " " + std::to_string(take),
                .turnsWhenAsked = isAttack || listed.name == "live-asked"};
            takes.push_back({.label = label,
                             .framesPerSecond = wanted.framesPerSecond,
                             .pictureCount = static_cast<std::size_t>(
                                 std::lround(wanted.lasts.count() * wanted.framesPerSecond)),
                             .picture = [shoot](std::size_t i) { return shoot->picture(i); }});
        }
    }
    return takes;
}

}  // namespace marrowby
