// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Scenes/Movement.h"
#include "Simulation/Scenes/Performance.h"
#include "Simulation/Scenes/Room.h"
#include "Simulation/Scenes/SceneLight.h"
#include "Simulation/Scenes/Sheet.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

enum class PropKind { print, bentPrint, poster, cutOut, phone, tablet, monitor };

[[nodiscard]] std::string_view name(PropKind kind);

/// A living person.
struct Actor {
    std::uint64_t person = 0;
    Performance plays = {};
};

/// A held-up thing that shows a person's face.
struct Prop {
    PropKind kind = PropKind::print;
    Sheet sheet = {};
    Movement moves{Placement{}};
    std::uint64_t person = 0;
    /// What the shown person does; a photo shows its beginning, a replay all of it.
    Performance plays = {};
    bool isReplay = false;
    /// A cut-out's eyes are cut out too.
    bool hasEyeHoles = false;
    /// The holding hands are visible.
    bool isHandHeld = false;
    /// Of the picture that it shows, which is a third higher than wide.
    int pixelsWide = 450;
};

/// What happens in front of a camera.
struct Scene {
    std::string name = {};
    /// In a few words.
    std::string tells = {};
    LightKind light = LightKind::normal;
    std::vector<Actor> actors = {};
    std::vector<Prop> props = {};
    Backdrop backdrop = Backdrop::furniture;
    /// A desk's far edge lies before the chest.
    bool hasDesk = false;
    /// A camera may start at any moment of the first seconds.
    TimeInterval beginning{9};
    /// Of the room, the noise and the exposure's start.
    std::uint64_t seed = 1;
};

/// A person who moves like that, blinks, and looks into the camera.
[[nodiscard]] Performance acting(Movement movement, std::uint64_t seed);
/// A person who holds still, a little away from the camera, and turns the head by `yaw` to either
/// side now and then.
[[nodiscard]] Performance lookingAround(std::uint64_t seed, float distance = 0.55F,
                                        float yaw = 0.12F);

}  // namespace marrowby
