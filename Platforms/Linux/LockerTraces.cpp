#include "Platforms/Linux/LockerTraces.h"

#include <algorithm>
#include <utility>

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

std::optional<LockHolder> lockHolder(const LockerTraces& traces) {
    for (const auto& [className, locker] : {std::pair("i3lock", KnownLocker::i3lock),
                                            std::pair("xsecurelock", KnownLocker::xsecurelock)}) {
        for (const LockerTraces::Window& window : traces.windows) {
            if (isShown(window) && window.className == className &&
                covers(window.frame, traces.screen)) {
                return LockHolder{.locker = locker, .window = window.id};
            }
        }
    }

    // It has a window for each monitor, and the same ones while it only blanks. Its property
    // outlives it when it is killed.
    const bool isSaverShown =
        std::ranges::any_of(traces.windows, [](const LockerTraces::Window& window) {
            return isShown(window) && window.instanceName == "xscreensaver";
        });
    if (isSaverShown && traces.screenSaverState == "LOCK")
        return LockHolder{.locker = KnownLocker::xscreensaver};
    return std::nullopt;
}

}  // namespace marrowby
