#include "Tests/Hostile/Ground/HonestSeries.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <algorithm>
#include <chrono>
#include <iostream>
#include <thread>

#include <poll.h>

namespace marrowby {

namespace {

constexpr const char* password = "Zx9 ß字Qé😀-L_w0~";
constexpr std::chrono::seconds limit{10};
/// Lockers that ignore keys in their first seconds hear them after this, and their dialogs stand.
constexpr std::chrono::milliseconds deafTime{3000};
constexpr std::chrono::milliseconds dialogTime{2500};

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

std::expected<void, std::string> HonestSeries::type(Field field) {
    if (auto locked = locker_->lock(password); !locked) return std::unexpected(locked.error());
    if (kind_ == ScreenLocker::Kind::xscreensaver) std::this_thread::sleep_for(deafTime);
    const bool hasDialog = kind_ != ScreenLocker::Kind::i3lock;
    if (field != Field::empty) {
        desktop_->tap(keycode::rightShift);
        if (hasDialog) std::this_thread::sleep_for(dialogTime);
    }
    if (field == Field::withLeftover) {
        for (std::uint8_t key = keycode::letterA; key < keycode::letterA + 5; ++key)
            desktop_->tap(key);
    }
    std::string doubt;
    keyEvents_->onDoubt = [&](const LockerDoubt& why) { doubt = description(why); };
    HonestTally& tally = tallies_[static_cast<std::size_t>(field)];
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
