#include "Platforms/Linux/LockerTraces.h"

#include "Platforms/Linux/CoveringFrame.h"

#include <algorithm>
#include <utility>

namespace marrowby {
namespace {

bool isShown(const LockerTraces::Window& window) {
    return window.overrideRedirect && window.mapped;
}

}  // namespace

std::optional<LockHolder> lockHolder(const LockerTraces& traces) {
    const Rect screen{.x = 0, .y = 0, .width = traces.screen.width, .height = traces.screen.height};
    for (const auto& [className, locker] : {std::pair("i3lock", KnownLocker::i3lock),
                                            std::pair("xsecurelock", KnownLocker::xsecurelock)}) {
        for (const LockerTraces::Window& window : traces.windows) {
            if (isShown(window) && window.className == className && covers(window.frame, screen)) {
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
