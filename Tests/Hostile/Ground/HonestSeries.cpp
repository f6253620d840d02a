// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/HonestSeries.h"

#include "Platforms/Linux/X11/ClientPrograms.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <string_view>
#include <thread>

#include <poll.h>

namespace marrowby {

namespace {

constexpr const char* password = "Zx9 ß字Qé😀-L_w0~";
constexpr std::chrono::seconds limit{10};
/// Interval of key taps until a dialog appears, and the time that it then needs.
constexpr std::chrono::milliseconds touchStep{200};
constexpr std::chrono::milliseconds dialogTime{800};

/// Name of the locker's dialog program; empty for lockers without one.
std::string_view dialogOf(ScreenLocker::Kind kind) {
    switch (kind) {
        case ScreenLocker::Kind::i3lock:
        case ScreenLocker::Kind::i3lockInBackground:
            return {};
        case ScreenLocker::Kind::xsecurelock:
            return "auth_x11";
        case ScreenLocker::Kind::xscreensaver:
            return "xscreensaver-auth";
        case ScreenLocker::Kind::mateScreensaver:
            return "mate-screensaver-dialog";
    }
    return {};
}

bool isAmongClients(const XcbConnection& connection, std::string_view program) {
    const ClientPrograms programs(connection);
    return std::ranges::any_of(programs.clients(), [&](std::uint32_t client) {
        const auto one = programs.behind(client);
        return one && one->path.ends_with(program);
    });
}

}  // namespace

double HonestTally::medianMilliseconds() const {
    if (milliseconds.empty()) return 0;
    auto sorted = milliseconds;
    std::ranges::sort(sorted);
    return sorted[sorted.size() / 2];
}

HonestSeries::HonestSeries(WorkingDesktop& desktop, ScreenLocker::Kind kind)
    : desktop_(&desktop),
      kind_(kind),
      locker_(std::make_unique<ScreenLocker>(desktop.displayName(), kind)),
      keyEvents_(std::make_unique<XTestKeyEvents>(desktop.displayName())) {}

std::expected<HonestSeries, std::string> HonestSeries::create(WorkingDesktop& desktop,
                                                              ScreenLocker::Kind kind,
                                                              const std::string& layout) {
    const auto setting = ChildProcess::start({.arguments = {"setxkbmap", "-layout", layout},
                                              .environment = {"DISPLAY=" + desktop.displayName()}});
    if (!setting) return std::unexpected(setting.error());
    if (!setting->waitEnded(TimeInterval(limit)))
        return std::unexpected("The layout could not be set.");
    return HonestSeries(desktop, kind);
}

bool HonestSeries::wake() const {
    const std::string_view dialog = dialogOf(kind_);
    const QDeadlineTimer deadline(limit);
    while (!deadline.hasExpired()) {
        desktop_->tap(keycode::rightShift);
        if (dialog.empty()) return true;
        std::this_thread::sleep_for(touchStep);
        if (!isAmongClients(desktop_->connection(), dialog)) continue;
        std::this_thread::sleep_for(dialogTime);
        return true;
    }
    return false;
}

std::expected<void, std::string> HonestSeries::type(Field field) {
    if (auto locked = locker_->lock(password); !locked) return std::unexpected(locked.error());
    if (field != Field::empty && !wake())
        return std::unexpected("The locker shows no field to somebody who touches a key.");
    if (field == Field::withLeftover) {
        for (std::uint8_t key = keycode::letterA; key < keycode::letterA + 5; ++key)
            desktop_->tap(key);
    }
    std::string doubt;
    keyEvents_->onDoubt = [&](const LockerDoubt& why) { doubt = description(why); };
    HonestTally& tally = tallies_[static_cast<std::size_t>(field)];
    // As when a scan starts.
    keyEvents_->wakeField([this] { return locker_->isRunning(); });
    const auto start = std::chrono::steady_clock::now();
    GuardedTyping typing(*keyEvents_, password, [this] { return locker_->isRunning(); });
    pollfd ended{.fd = typing.endDescriptor(), .events = POLLIN, .revents = 0};
    ::poll(&ended, 1, -1);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    const auto outcome = typing.outcome();
    const QDeadlineTimer deadline(limit);
    while (outcome && locker_->isRunning() && !deadline.hasExpired())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    ++tally.typed;
    if (outcome && !locker_->isRunning()) {
        ++tally.accepted;
        tally.milliseconds.push_back(took.count());
    } else {
        std::cerr << (outcome ? "typed, but not accepted " : "not typed ") << doubt << '\n';
    }
    locker_->kill();
    const auto bytes = desktop_->terminalBytes();
    if (!bytes) return std::unexpected(bytes.error());
    tally.leakedCharacters += bytes->size();
    return {};
}

}  // namespace marrowby
