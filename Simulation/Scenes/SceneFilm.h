// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Camera/PixelBuffer.h"
#include "Simulation/People/PeopleRenderer.h"
#include "Simulation/Scenes/Cast.h"
#include "Simulation/Scenes/Optics.h"
#include "Simulation/Scenes/Scene.h"
#include "Simulation/Scenes/Sensor.h"
#include "Simulation/Scenes/Texture.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace marrowby {

/// Ground truth of one picture of a scene. Pixels, origin at the top-left corner.
struct SceneTruth {
    struct HeldUp {
        PropKind kind = PropKind::print;
        bool isReplay = false;
        /// Of the whole object: top-left, top-right, bottom-right, bottom-left.
        std::array<Point, 4> corners = {};
        /// The face that it shows, where it is in this picture; the angles are those of the
        /// photographed head.
        FaceTruth face = {};
    };

    TimeInterval at{};
    /// Living people, the farthest first.
    std::vector<FaceTruth> people = {};
    std::vector<HeldUp> heldUp = {};
};

/// Films a scene: draws the room, the people and what they hold up, the farthest first, and exposes
/// a sensor to it. The same moments in the same order give the same pictures in the same build. One
/// thread at a time. Making one takes some tenths of a second for every person who is not yet in
/// the cast.
class SceneFilm {
  public:
    struct Moment {
        /// Since the scene began.
        TimeInterval at{};
        /// Since the camera's first picture; 0 begins anew.
        TimeInterval running{};
        TimeInterval frameTime{1.0 / 30};
        int width = 640;
        int height = 480;
    };
    struct Frame {
        std::shared_ptr<const PixelBuffer> picture;
        SceneTruth truth;
    };

    SceneFilm(Scene scene, Cast& cast, const Optics& optics = {});

    [[nodiscard]] const Scene& scene() const { return scene_; }
    [[nodiscard]] Frame shoot(const Moment& moment);

  private:
    /// What a prop shows.
    struct Picture {
        Texture texture;
        FaceTruth face;
    };
    struct Shooting;

    void drawActor(const Actor& actor, const Stance& stance, Shooting& shooting);
    void drawProp(std::size_t index, const Placement& place, Shooting& shooting);
    [[nodiscard]] Picture photograph(const Prop& prop, TimeInterval at);

    Scene scene_;
    const SceneLight light_;
    const Optics optics_;
    std::map<std::uint64_t, Person> people_;
    PeopleRenderer renderer_;
    Sensor sensor_;
    /// Of the hands that hold things up.
    const Texture skin_;
    Exposure exposure_;
    TimeInterval ranFor_{};
    std::uint64_t runs_ = 0;
    std::optional<LinearImage> room_;
    /// By prop; of a replay the newest picture.
    std::vector<std::optional<Picture>> shown_;
    std::optional<LinearImage> photoRoom_;
};

}  // namespace marrowby
