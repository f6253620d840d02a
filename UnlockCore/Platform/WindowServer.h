// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/PanelDrawing.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace marrowby {

/// A panel's drawing, replaced as a whole. Main thread.
class PanelContent {
  public:
    [[nodiscard]] const PanelDrawing& drawing() const { return drawing_; }
    void draw(PanelDrawing drawing) {
        drawing_ = std::move(drawing);
        if (onChange_) onChange_();
    }
    /// Set by the one panel that shows it, which clears it when destroyed.
    void onChange(std::function<void()> callback) { onChange_ = std::move(callback); }

  private:
    PanelDrawing drawing_;
    std::function<void()> onChange_;
};

/// A screen of the desktop. In points, y downwards, from a corner that the window server chooses.
struct ScreenGeometry {
    Rect frame;
    /// Of the camera's housing in the middle of the upper edge; empty without one.
    Size notch;
    friend bool operator==(const ScreenGeometry&, const ScreenGeometry&) = default;
};

/// The kinds of display that are part of the desktop now, asleep or not.
struct ActiveDisplays {
    bool hasBuiltIn = false;
    bool hasExternal = false;
    friend bool operator==(const ActiveDisplays&, const ActiveDisplays&) = default;
};

/// A window of the application that can lie above the lock screen. Main thread; closed when this is
/// destroyed.
class LockScreenPanel {
  public:
    virtual ~LockScreenPanel() = default;
    [[nodiscard]] virtual std::int64_t windowNumber() const = 0;
    /// In points, as a ScreenGeometry has them; not drawn at once.
    virtual void setFrame(const Rect& frame) = 0;
    /// Whichever application is active.
    virtual void orderFront() = 0;
    virtual void orderOut() = 0;
};

/// A space of the window server above the lock screen. A panel stays in it until it is removed or
/// closed. Main thread.
class LockScreenSpace {
  public:
    virtual ~LockScreenSpace() = default;
    virtual void add(const LockScreenPanel& panel) = 0;
    virtual void remove(const LockScreenPanel& panel) = 0;
};

/// How often the pointer is polled where the system reports no movement.
inline constexpr TimeInterval pointerInterval{0.2};

/// The windows of the system, its screens and the pointer. Main thread.
class WindowServer {
  public:
    /// Destroying it ends the watch.
    class PointerWatch {
      public:
        virtual ~PointerWatch() = default;
    };

    virtual ~WindowServer() = default;
    /// The screen the user logs in at; nothing without one.
    [[nodiscard]] virtual std::optional<ScreenGeometry> mainScreen() = 0;
    /// None of either kind where that is unknown.
    [[nodiscard]] virtual ActiveDisplays activeDisplays() = 0;
    /// Reports the pointer's position in ScreenGeometry's coordinates: soon after the start and
    /// after every movement, grabbed or not. Null where that is unknown.
    [[nodiscard]] virtual std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) = 0;
    /// Borderless, click-through, never the active window, at the level of the lock screen's shield
    /// where the system has levels. Null where no window can be had.
    [[nodiscard]] virtual std::unique_ptr<LockScreenPanel> makePanel(
        const Rect& frame, std::shared_ptr<PanelContent> content) = 0;
    /// Whether spaces above the lock screen can be made.
    [[nodiscard]] virtual bool hasLockScreenSpaces() = 0;
    /// Null where there are none.
    [[nodiscard]] virtual std::unique_ptr<LockScreenSpace> makeLockScreenSpace() = 0;
};

}  // namespace marrowby
