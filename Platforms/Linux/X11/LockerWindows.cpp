// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/LockerWindows.h"

#include <algorithm>
#include <utility>

namespace marrowby {
namespace {

bool isShown(const LockerWindows::Window& window) {
    return window.overrideRedirect && window.mapped;
}

}  // namespace

std::optional<LockHolder> lockHolder(const LockerWindows& lockers) {
    const Rect screen{
        .x = 0, .y = 0, .width = lockers.screen.width, .height = lockers.screen.height};
    for (const auto& [className, locker] : {std::pair("i3lock", KnownLocker::i3lock),
                                            std::pair("xsecurelock", KnownLocker::xsecurelock)}) {
        for (const LockerWindows::Window& window : lockers.windows) {
            if (isShown(window) && window.className == className && covers(window.frame, screen)) {
                return LockHolder{.locker = locker, .window = window.id};
            }
        }
    }

    // xscreensaver has a window per monitor, also while it only blanks; its property survives when
    // it is killed.
    const bool isSaverShown =
        std::ranges::any_of(lockers.windows, [](const LockerWindows::Window& window) {
            return isShown(window) && window.instanceName == "xscreensaver";
        });
    if (isSaverShown && lockers.screenSaverState == "LOCK")
        return LockHolder{.locker = KnownLocker::xscreensaver};

    // These end when they can't grab the keyboard. Unless it blanks the screen, xtrlock's window
    // covers one pixel.
    for (const LockerWindows::Window& window : lockers.windows) {
        if (!isShown(window)) continue;
        if (window.program == "slock" && covers(window.frame, screen))
            return LockHolder{.locker = KnownLocker::slock, .window = window.id};
        if (window.program == "xtrlock")
            return LockHolder{.locker = KnownLocker::xtrlock, .window = window.id};
    }
    return std::nullopt;
}

std::string_view untypedName(KnownLocker locker) {
    switch (locker) {
        case KnownLocker::slock:
            return "slock";
        case KnownLocker::xtrlock:
            return "xtrlock";
        case KnownLocker::i3lock:
        case KnownLocker::xsecurelock:
        case KnownLocker::xscreensaver:
            break;
    }
    return {};
}

}  // namespace marrowby
