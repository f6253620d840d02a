#include "Platforms/Linux/LockerTraces.h"

#include <algorithm>

namespace marrowby {
namespace {

/// Pixels that xsecurelock leaves free at each edge of the screen.
constexpr double margin = 1;

bool covers(const Rect& frame, const Size& screen) {
    return frame.x <= margin && frame.y <= margin && frame.maxX() >= screen.width - margin &&
           frame.maxY() >= screen.height - margin;
}

bool isShown(const LockerTraces::Window& window) {
    return window.overrideRedirect && window.mapped;
}

}  // namespace

std::optional<KnownLocker> lockerHolding(const LockerTraces& traces) {
    const auto isHeldBy = [&](const char* className) {
        return std::ranges::any_of(traces.windows, [&](const LockerTraces::Window& window) {
            return isShown(window) && window.className == className &&
                   covers(window.frame, traces.screen);
        });
    };
    if (isHeldBy("i3lock")) return KnownLocker::i3lock;
    if (isHeldBy("xsecurelock")) return KnownLocker::xsecurelock;

    // It has a window for each monitor, and the same ones while it only blanks. Its property
    // outlives it when it is killed.
    const bool isSaverShown =
        std::ranges::any_of(traces.windows, [](const LockerTraces::Window& window) {
            return isShown(window) && window.instanceName == "xscreensaver";
        });
    if (isSaverShown && traces.screenSaverState == "LOCK") return KnownLocker::xscreensaver;
    return std::nullopt;
}

}  // namespace marrowby
