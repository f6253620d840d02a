#pragma once

#include "UnlockCore/Engine/OverlayPhase.h"
#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/PanelDrawing.h"
#include "UnlockCore/Platform/WindowServer.h"

namespace marrowby {

/// The island above the lock screen at a moment: a dark pill at the middle of the screen's upper
/// edge, around the notch where there is one, that grows and shrinks with what it has to say.
struct Island {
    OverlayPhase phase = OverlayPhase::Hidden{};
    /// Since the phase began.
    TimeInterval since{};
    /// How large the pill was then.
    Size begin;
    /// Of the screen.
    Size notch;

    /// Where its panel lies; the same for all moments.
    [[nodiscard]] static Rect frame(const ScreenGeometry& screen);

    /// Of the pill.
    [[nodiscard]] Size size() const;
    /// Where the pointer hovers over it once it rests. In points of its panel.
    [[nodiscard]] Rect hoverArea() const;
    /// Opaque but for the pill's edge, so that it needs no compositor. Empty when there is nothing
    /// to see.
    [[nodiscard]] PanelDrawing drawing() const;
    /// Whether a later moment of this phase looks different.
    [[nodiscard]] bool isMoving() const;
};

}  // namespace marrowby
