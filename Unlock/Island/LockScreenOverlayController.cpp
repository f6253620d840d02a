// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Island/LockScreenOverlayController.h"

#include <utility>
#include <variant>

namespace marrowby {

namespace {

constexpr TimeInterval frameInterval(1.0 / 60);
constexpr TimeInterval frameTolerance(0.0005);

/// Whether the engine reacts to a hover in this phase.
bool awaitsHover(const OverlayPhase& phase) {
    return std::holds_alternative<OverlayPhase::Closed>(phase) ||
           std::holds_alternative<OverlayPhase::Failure>(phase);
}

bool contains(const Rect& area, const Point& place) {
    return place.x >= area.x && place.x < area.maxX() && place.y >= area.y && place.y < area.maxY();
}

}  // namespace

void LockScreenOverlayController::show(const OverlayPhase& phase) {
    begin_ = isShown_ ? island().size() : Size{};
    phase_ = phase;
    phaseBegan_ = services_.clock.now();
    pointerWatch_.reset();
    const bool isGoing = std::holds_alternative<OverlayPhase::Hidden>(phase) ||
                         (std::holds_alternative<OverlayPhase::Leaving>(phase) && !isShown_);
    if (isGoing || !(std::holds_alternative<OverlayPhase::Leaving>(phase) || place())) {
        hide();
        return;
    }
    update();
    watchPointer();
}

Island LockScreenOverlayController::island() {
    const Date now = services_.clock.now();
    // The wall clock may have been set back.
    if (now < phaseBegan_) phaseBegan_ = now;
    return {.phase = phase_, .since = now - phaseBegan_, .begin = begin_, .notch = screen_.notch};
}

bool LockScreenOverlayController::place() {
    const auto screen = services_.lockScreen.server().mainScreen();
    if (!screen) return false;
    screen_ = *screen;
    const Rect frame = Island::frame(screen_);
    if (!window_ || !window_->exists()) window_.emplace(services_.lockScreen, content_, frame);
    if (!window_->exists()) return false;
    if (!isShown_) begin_ = screen_.notch;
    // Without a space above the lock screen the panel only has the shielding window's level.
    (void)window_->show(frame, true);
    isShown_ = true;
    return true;
}

void LockScreenOverlayController::update() {
    const Island now = island();
    PanelDrawing drawing = now.drawing();
    const bool isMoving = now.isMoving();
    if (drawing.empty() && !isMoving) {
        hide();
        return;
    }
    content_->draw(std::move(drawing));
    if (!isMoving) {
        timer_.reset();
    } else if (!timer_) {
        timer_ = services_.mainThread.every(frameInterval, frameTolerance, [this] { update(); });
    }
}

void LockScreenOverlayController::hide() {
    timer_.reset();
    pointerWatch_.reset();
    if (!std::exchange(isShown_, false)) return;
    if (window_) window_->hide();
    content_->draw({});
}

void LockScreenOverlayController::watchPointer() {
    if (!isShown_ || !awaitsHover(phase_)) return;
    isHovering_.reset();
    pointerWatch_ = services_.lockScreen.server().watchPointer(
        [this](const Point& place) { pointerIsAt(place); });
}

void LockScreenOverlayController::pointerIsAt(const Point& place) {
    const Rect panel = Island::frame(screen_);
    const bool isHovering =
        contains(island().hoverArea(), {.x = place.x - panel.x, .y = place.y - panel.y});
    // A pointer that was there already must leave first.
    const bool hasCome = isHovering_ && !*isHovering_ && isHovering;
    isHovering_ = isHovering;
    if (hasCome && onHover) onHover();
}

}  // namespace marrowby
