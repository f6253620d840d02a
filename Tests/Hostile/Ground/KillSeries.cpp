// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/KillSeries.h"

#include "Platforms/Linux/X11/XRawKeys.h"
#include "UnlockCore/Platform/LockerTiming.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include <poll.h>
#include <signal.h>

namespace marrowby {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* password = "Corr3ct-HoRse_b@ttery!";
/// About twice the time until a killed locker's keyboard grab is gone.
constexpr TimeInterval spread{0.004};

XTestKeyEvents::Pause pauseWithGap(TimeInterval gap) {
    return [gap](TimeInterval duration) {
        const TimeInterval wait = duration == lockertiming::eventGap ? gap : duration;
        if (wait > TimeInterval{}) XTestKeyEvents::sleep(wait);
    };
}

/// Reports every key press on a display.
class PressWatch {
  public:
    explicit PressWatch(const std::string& displayName)
        : connection_(XcbConnection::create(displayName).value()),
          keys_(XRawKeys::select(*connection_, XRawKeys::Whose::everybodys)) {
        (void)connection_->atom("done");
    }
    [[nodiscard]] int descriptor() const { return connection_->fd(); }
    [[nodiscard]] int readCount() const {
        int count = 0;
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_->get())}) {
            const auto key = keys_ ? keys_->read(*event) : std::nullopt;
            count += key && key->down ? 1 : 0;
        }
        return count;
    }

  private:
    std::unique_ptr<XcbConnection> connection_;
    std::optional<XRawKeys> keys_;
};

}  // namespace

/// When to kill: `delay` after a key press, or after the time of that press in the undisturbed run.
struct KillSeries::Moment {
    /// 0: the start.
    std::size_t press = 0;
    TimeInterval delay{};

    [[nodiscard]] std::optional<Clock::time_point> when(
        Clock::time_point start, const std::vector<Clock::time_point>& presses) const {
        if (presses.size() < press) return std::nullopt;
        const auto from = press == 0 ? start : presses[press - 1];
        return from + std::chrono::duration_cast<Clock::duration>(delay);
    }
};

struct KillSeries::Attempt {
    std::vector<Clock::time_point> presses;
    std::optional<Clock::time_point> killed;
    Clock::time_point ended;
    GuardedTyping::Outcome outcome;
};

KillSeries::KillSeries(WorkingDesktop& desktop, ScreenLocker::Kind kind, TimeInterval gap,
                       std::uint64_t seed)
    : desktop_(&desktop),
      locker_(std::make_unique<ScreenLocker>(desktop.displayName(), kind)),
      keyEvents_(std::make_unique<XTestKeyEvents>(desktop.displayName(), pauseWithGap(gap))),
      chance_(seed),
      keyboard_(desktop.keyboard()) {}

std::expected<KillSeries, std::string> KillSeries::create(WorkingDesktop& desktop,
                                                          ScreenLocker::Kind kind, TimeInterval gap,
                                                          std::uint64_t seed) {
    KillSeries series(desktop, kind, gap, seed);
    if (auto locked = series.locker_->lock(password); !locked)
        return std::unexpected(locked.error());
    std::string doubt;
    series.keyEvents_->onDoubt = [&](const LockerDoubt& why) { doubt = description(why); };
    const Attempt undisturbed = series.attempt({.press = SIZE_MAX}, 0);
    series.keyEvents_->onDoubt = nullptr;
    series.locker_->kill();
    if (!undisturbed.outcome || undisturbed.presses.empty()) {
        return std::unexpected("The password is not typed into a locker that nobody disturbs: " +
                               doubt);
    }
    for (const auto& press : undisturbed.presses)
        series.rhythm_.push_back(press - undisturbed.presses.front());
    if (const auto bytes = desktop.terminalBytes(); !bytes || !bytes->empty())
        return std::unexpected("Characters came to the terminal without any kill.");
    return series;
}

KillSeries::Moment KillSeries::chooseMoment() {
    const std::size_t press = chance_.next() % (rhythm_.size() + 1);
    if (press == 0) return {.press = 0, .delay = TimeInterval(chance_.between(0, 0.05))};
    // By the clock: a batch of keys is over before its first press is reported.
    if (press > 1 && chance_.next() % 2 == 0) {
        const double delay =
            rhythm_[press - 1].count() + chance_.between(-spread.count(), spread.count() / 4);
        return {.press = 1, .delay = TimeInterval(std::max(0.0, delay))};
    }
    return {.press = press, .delay = TimeInterval(chance_.between(0, spread.count() / 2))};
}

std::expected<void, std::string> KillSeries::kill(int signal) {
    if (auto locked = locker_->lock(password); !locked) return std::unexpected(locked.error());
    const Attempt made = attempt(chooseMoment(), signal);
    locker_->kill();
    const auto bytes = desktop_->terminalBytes();
    if (!bytes) return std::unexpected(bytes.error());
    KillTally& tally = tallies_[signal];
    if (made.killed) {
        ++tally.kills;
        const bool hasBegun = !made.presses.empty() && made.presses.front() < *made.killed;
        tally.whileTyping += hasBegun && *made.killed < made.ended ? 1 : 0;
        tally.stopped += made.outcome ? 0 : 1;
    }
    tally.leaks += bytes->empty() ? 0 : 1;
    tally.leakedCharacters += bytes->size();
    tally.changedKeyboards += desktop_->keyboard() == keyboard_ ? 0 : 1;
    return {};
}

KillSeries::Attempt KillSeries::attempt(const Moment& moment, int signal) {
    const PressWatch watch(desktop_->displayName());
    Attempt made;
    const auto start = Clock::now();
    GuardedTyping typing(*keyEvents_, password);
    while (!typing.hasEnded()) {
        const auto due = made.killed ? std::nullopt : moment.when(start, made.presses);
        const auto now = Clock::now();
        if (due && *due <= now) {
            (void)locker_->send(signal);
            made.killed = Clock::now();
            continue;
        }
        const auto left = std::chrono::nanoseconds(due ? *due - now : std::chrono::seconds(1));
        const timespec wait{.tv_sec = left.count() / 1'000'000'000,
                            .tv_nsec = left.count() % 1'000'000'000};
        std::array<pollfd, 2> wanted{
            pollfd{.fd = watch.descriptor(), .events = POLLIN, .revents = 0},
            pollfd{.fd = typing.endDescriptor(), .events = POLLIN, .revents = 0}};
        ::ppoll(wanted.data(), wanted.size(), &wait, nullptr);
        const auto count = static_cast<std::size_t>(watch.readCount());
        made.presses.insert(made.presses.end(), count, Clock::now());
    }
    made.ended = Clock::now();
    made.outcome = typing.outcome();
    return made;
}

}  // namespace marrowby
