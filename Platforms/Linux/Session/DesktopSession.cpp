// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Session/DesktopSession.h"

#include "Platforms/Linux/Desktop/BusAddress.h"
#include "Platforms/Linux/Input/EvdevInputIdle.h"
#include "Platforms/Linux/Input/EvdevSpaceKeys.h"
#include "Platforms/Linux/Session/DesktopUnlocking.h"
#include "Platforms/Linux/Session/GnomeDisplays.h"
#include "Platforms/Linux/Session/GnomeInputIdle.h"
#include "Platforms/Linux/Session/LinuxLockMonitor.h"
#include "Platforms/Linux/Session/LogindWatcher.h"
#include "Platforms/Linux/Session/ScreenSaverWatcher.h"
#include "Platforms/Linux/Wayland/KWinDisplays.h"
#include "Platforms/Linux/Wayland/WaylandInputIdle.h"
#include "Platforms/Linux/X11/X11Display.h"

#include <cstdlib>
#include <string_view>
#include <utility>

#include <unistd.h>

namespace marrowby {

namespace {

std::unique_ptr<X11Display> makeDisplay(std::optional<std::string> name) {
    return name ? std::make_unique<X11Display>(*std::move(name)) : nullptr;
}

/// Idle time without an X server: from the desktop, which needs no rights, else from the devices
/// that can be read.
class DesktopInputIdle final : public InputIdle {
  public:
    DesktopInputIdle(const std::string& sessionBus, const std::string& waylandDisplay,
                     const InputIdle& devices)
        : gnome_(sessionBus), devices_(devices) {
        if (!waylandDisplay.empty()) compositor_.emplace(waylandDisplay);
    }

    void start() { gnome_.start(); }

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override {
        if (const auto idle = gnome_.sinceLastInput()) return idle;
        if (const auto idle = compositor_ ? compositor_->sinceLastInput() : std::nullopt)
            return idle;
        return devices_.sinceLastInput();
    }
    [[nodiscard]] TimeInterval systemUptime() const override { return devices_.systemUptime(); }

  private:
    GnomeInputIdle gnome_;
    std::optional<WaylandInputIdle> compositor_;
    const InputIdle& devices_;
};

/// Whether the desktop has switched the displays off, where it says so.
class DesktopDisplays {
  public:
    DesktopDisplays(const std::string& sessionBus, const std::string& waylandDisplay)
        : gnome_(sessionBus, getuid()) {
        if (!waylandDisplay.empty()) kwin_.emplace(waylandDisplay);
    }

    void start(const std::function<void(bool areAsleep)>& onChange) {
        gnome_.onChange = [this, onChange] { onChange(areAsleep()); };
        if (kwin_) kwin_->onChange = gnome_.onChange;
        gnome_.start();
    }

  private:
    [[nodiscard]] bool areAsleep() const {
        return gnome_.areAsleep() || (kwin_ && kwin_->areAsleep());
    }

    GnomeDisplays gnome_;
    std::optional<KWinDisplays> kwin_;
};

}  // namespace

struct DesktopSession::Sources {
    Sources(Places places, MainThread& mainThread)
        : display(makeDisplay(std::move(places.display))),
          evdevIdle(places.inputDevices),
          evdevSpaceKeys(places.inputDevices),
          logind(std::move(places.systemBus), mainThread),
          savers(places.sessionBus),
          lock(logind, savers, display.get(), mainThread) {
        if (places.isWayland) {
            desktopIdle = std::make_unique<DesktopInputIdle>(places.sessionBus,
                                                             places.waylandDisplay, evdevIdle);
            desktopDisplays =
                std::make_unique<DesktopDisplays>(places.sessionBus, places.waylandDisplay);
            unlocking =
                std::make_unique<DesktopUnlocking>(logind, places.sessionBus, places.policy);
        }
    }

    const std::unique_ptr<X11Display> display;
    EvdevInputIdle evdevIdle;
    /// Null without Wayland.
    std::unique_ptr<DesktopInputIdle> desktopIdle;
    /// The same.
    std::unique_ptr<DesktopDisplays> desktopDisplays;
    EvdevSpaceKeys evdevSpaceKeys;
    LogindWatcher logind;
    ScreenSaverWatcher savers;
    LinuxLockMonitor lock;
    /// Null where the password is typed.
    std::unique_ptr<DesktopUnlocking> unlocking;
};

DesktopSession::Places DesktopSession::Places::ofThisProcess() {
    const auto environment = [](const char* name) -> std::string_view {
        const char* value = std::getenv(name);
        return value ? value : "";
    };
    Places places{
        .systemBus = busaddress::system(), .sessionBus = busaddress::session(), .display = {}};
    // Through Xwayland neither all input nor the lock screen is visible.
    places.isWayland =
        environment("XDG_SESSION_TYPE") == "wayland" || !environment("WAYLAND_DISPLAY").empty();
    places.waylandDisplay = environment("WAYLAND_DISPLAY");
    if (const auto display = environment("DISPLAY"); !display.empty() && !places.isWayland)
        places.display = display;
    return places;
}

DesktopSession::DesktopSession(Places places, MainThread& mainThread)
    : sources_(std::make_unique<Sources>(std::move(places), mainThread)) {}

DesktopSession::~DesktopSession() = default;

void DesktopSession::start() {
    const auto update = [this] { sources_->lock.update(); };
    sources_->logind.onChange = [this, update] {
        update();
        if (sources_->unlocking) sources_->unlocking->update();
    };
    const auto away = [this](const std::string& sentence) {
        if (onAway) onAway(sentence);
    };
    sources_->savers.onChange = update;
    sources_->savers.onBusLost = [this, away] { away(inEnglish(sources_->lock.problem())); };
    if (sources_->display) sources_->display->start({.onChange = update, .onAway = away});
    sources_->logind.start();
    sources_->savers.start();
    if (sources_->desktopIdle) sources_->desktopIdle->start();
    if (sources_->desktopDisplays) {
        sources_->desktopDisplays->start(
            [this](bool areAsleep) { sources_->lock.noteDisplays(areAsleep); });
    }
    if (sources_->unlocking) {
        sources_->unlocking->canTypeThroughKernel = canTypeThroughKernel;
        sources_->unlocking->start();
    }
    update();
}

LockEventWatching& DesktopSession::lockEvents() {
    return sources_->lock;
}

const LockStateReading& DesktopSession::lockState() const {
    return sources_->lock;
}

InputIdle& DesktopSession::inputIdle() {
    if (sources_->display) return *sources_->display;
    if (sources_->desktopIdle) return *sources_->desktopIdle;
    return sources_->evdevIdle;
}

SpaceKeys& DesktopSession::spaceKeys() {
    if (sources_->display) return *sources_->display;
    return sources_->evdevSpaceKeys;
}

SessionUnlocking* DesktopSession::unlocking() {
    return sources_->unlocking.get();
}

}  // namespace marrowby
