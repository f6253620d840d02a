// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/OverlayPhase.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/PanelDrawing.h"
#include "UnlockCore/Platform/WindowServer.h"

namespace marrowby {

/// The island at one moment: a dark pill at the top centre of the lock screen, around the notch if
/// there is one, that resizes with its content.
struct Island {
    OverlayPhase phase = OverlayPhase::Hidden{};
    /// Since the phase began.
    TimeInterval since{};
    /// The pill's size at that time.
    Size begin;
    /// Of the screen.
    Size notch;

    /// The panel's frame, the same at all times.
    [[nodiscard]] static Rect frame(const ScreenGeometry& screen);

    /// Of the pill.
    [[nodiscard]] Size size() const;
    /// Where the pointer hovers over the resting island, in the panel's points.
    [[nodiscard]] Rect hoverArea() const;
    /// Opaque except for the pill's edge, so that it needs no compositor. Empty while the island is
    /// invisible.
    [[nodiscard]] PanelDrawing drawing() const;
    /// Whether this phase still changes the drawing.
    [[nodiscard]] bool isMoving() const;
};

}  // namespace marrowby
