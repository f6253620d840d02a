#pragma once

#include "UnlockCore/Foundation/Geometry.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/PanelDrawing.h"

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
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

/// How a panel is made, in the system's own numbers.
struct PanelConfiguration {
    std::uint64_t styleMask = 0;
    std::uint64_t backing = 0;
    bool isDeferred = false;
    bool isOpaque = false;
    bool hasClearBackground = true;
    bool hasShadow = false;
    bool isMovable = false;
    bool isReleasedWhenClosed = false;
    bool hidesOnDeactivate = false;
    std::int64_t level = 0;
    std::uint64_t collectionBehavior = 0;
    std::int64_t animationBehavior = 0;
    bool ignoresMouseEvents = true;
    bool acceptsMouseMovedEvents = true;
    bool canBecomeVisibleWithoutLogin = true;
    friend bool operator==(const PanelConfiguration&, const PanelConfiguration&) = default;
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

/// The library of the private entry points, and their names in SkyLightFunctions' order.
namespace skylight {
inline constexpr const char* path =
    "/System/Library/PrivateFrameworks/SkyLight.framework/Versions/A/SkyLight";
inline constexpr std::array symbols{"SLSMainConnectionID",
                                    "SLSSpaceCreate",
                                    "SLSSpaceSetAbsoluteLevel",
                                    "SLSShowSpaces",
                                    "SLSSpaceAddWindowsAndRemoveFromSpaces",
                                    "SLSRemoveWindowsFromSpaces"};
}  // namespace skylight

/// Private entry points of the window server, which not every system has. Results are ignored. Main
/// thread.
class SkyLightFunctions {
  public:
    using Connection = std::uint32_t;
    /// As wide as the window server's; a narrower argument would leave half a register undefined.
    using Space = std::uint64_t;

    virtual ~SkyLightFunctions() = default;
    [[nodiscard]] virtual Connection mainConnectionID() = 0;
    [[nodiscard]] virtual Space spaceCreate(Connection connection, std::int32_t one,
                                            std::int32_t zero) = 0;
    virtual void spaceSetAbsoluteLevel(Connection connection, Space space, std::int32_t level) = 0;
    virtual void showSpaces(Connection connection, std::span<const Space> spaces) = 0;
    virtual void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                                    std::span<const std::int64_t> windows,
                                                    std::int32_t options) = 0;
    virtual void removeWindowsFromSpaces(Connection connection,
                                         std::span<const std::int64_t> windows,
                                         std::span<const Space> spaces) = 0;
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
    /// Reports the pointer's position in ScreenGeometry's coordinates: soon after the start and
    /// after every movement, grabbed or not. Null where that is unknown.
    [[nodiscard]] virtual std::unique_ptr<PointerWatch> watchPointer(
        std::function<void(const Point&)> onPlace) = 0;
    [[nodiscard]] virtual std::int64_t shieldingWindowLevel() = 0;
    /// Null where no window can be had.
    [[nodiscard]] virtual std::unique_ptr<LockScreenPanel> makePanel(
        const PanelConfiguration& configuration, const Rect& frame,
        std::shared_ptr<PanelContent> content) = 0;
    /// Looks the functions up anew: all six, or null.
    [[nodiscard]] virtual std::shared_ptr<SkyLightFunctions> loadSkyLight() = 0;
};

}  // namespace marrowby
