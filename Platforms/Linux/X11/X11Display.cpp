// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11Display.h"

#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/X11/X11InputIdle.h"
#include "Platforms/Linux/X11/X11LockState.h"
#include "Platforms/Linux/X11/X11LockWatcher.h"
#include "Platforms/Linux/X11/X11SleepWatcher.h"
#include "Platforms/Linux/X11/X11SpaceKeys.h"

#include <QTimer>
#include <algorithm>
#include <chrono>
#include <expected>
#include <utility>

namespace marrowby {

/// The connections of a connected display.
struct X11Display::Parts {
    std::shared_ptr<const X11LockState> lock;
    std::unique_ptr<X11InputIdle> idle;
    std::unique_ptr<X11SpaceKeys> spaceKeys;
    std::unique_ptr<X11LockWatcher> watcher;
    /// Null where the display doesn't tell.
    std::unique_ptr<X11SleepWatcher> sleepWatcher;

    [[nodiscard]] static std::expected<std::unique_ptr<Parts>, std::string> create(
        const std::string& name, const std::function<void()>& onChange,
        std::function<void(std::string)> onLost) {
        auto lock = X11LockState::create(name);
        if (!lock) return std::unexpected(lock.error());
        auto idle = X11InputIdle::create(name);
        if (!idle) return std::unexpected(idle.error());
        auto spaceKeys = X11SpaceKeys::create(name);
        if (!spaceKeys) return std::unexpected(spaceKeys.error());
        auto watcher = X11LockWatcher::create(name, onChange, std::move(onLost));
        if (!watcher) return std::unexpected(watcher.error());
        return std::make_unique<Parts>(
            Parts{.lock = std::move(*lock),
                  .idle = std::move(*idle),
                  .spaceKeys = std::move(*spaceKeys),
                  .watcher = std::move(*watcher),
                  .sleepWatcher = X11SleepWatcher::create(name, onChange)});
    }
};

struct X11Display::Listener {
    std::function<void(Press)> onPress;
    std::unique_ptr<Listening> listening;
};

class X11Display::Handle final : public Listening {
  public:
    explicit Handle(std::shared_ptr<Listener> listener) : listener_(std::move(listener)) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    // May be called from the listener's own callback.
    ~Handle() override { listener_->listening.reset(); }

  private:
    std::shared_ptr<Listener> listener_;
};

class X11Display::Retry {
  public:
    explicit Retry(std::function<void()> attempt) {
        timer_.setSingleShot(true);
        timer_.setTimerType(Qt::VeryCoarseTimer);
        QObject::connect(&timer_, &QTimer::timeout, std::move(attempt));
    }
    void schedule() {
        timer_.start(delay_);
        delay_ = std::min(delay_ * 2, longest);
    }
    void succeed() { delay_ = shortest; }

  private:
    static constexpr std::chrono::milliseconds shortest{1000};
    static constexpr std::chrono::milliseconds longest{30'000};
    QTimer timer_;
    std::chrono::milliseconds delay_ = shortest;
};

X11Display::X11Display(std::string name) : name_(std::move(name)) {}

X11Display::~X11Display() = default;

void X11Display::start(Callbacks callbacks) {
    callbacks_ = std::move(callbacks);
    connect();
}

void X11Display::connect() {
    const bool isFirst = !retry_;
    if (isFirst) retry_ = std::make_unique<Retry>([this] { connect(); });
    auto parts = Parts::create(
        name_, [this] { noteChange(); }, [this](const std::string& sentence) { lose(sentence); });
    if (!parts) {
        if (isFirst) callbacks_.onAway(parts.error());
        retry_->schedule();
        return;
    }
    retry_->succeed();
    parts_ = std::move(*parts);
    noteSleep();
    {
        const MutexLock lock(mutex_);
        lock_ = parts_->lock;
    }
    std::erase_if(listeners_, [](const auto& listener) { return listener.expired(); });
    for (const auto& weak : listeners_) {
        if (const auto listener = weak.lock())
            listener->listening = parts_->spaceKeys->listen(listener->onPress);
    }
    if (!isFirst) callbacks_.onChange();
}

void X11Display::lose(const std::string& sentence) {
    {
        const MutexLock lock(mutex_);
        lock_.reset();
    }
    for (const auto& weak : listeners_) {
        if (const auto listener = weak.lock()) listener->listening.reset();
    }
    parts_.reset();
    noteSleep();
    retry_->schedule();
    callbacks_.onAway(sentence);
    callbacks_.onChange();
}

void X11Display::noteChange() {
    noteSleep();
    callbacks_.onChange();
}

void X11Display::noteSleep() {
    areMonitorsAsleep_ = parts_ && parts_->sleepWatcher && parts_->sleepWatcher->isAsleep();
}

LockState X11Display::state() const {
    const auto reading = lockReading();
    return reading ? reading->state() : LockState{};
}

SessionLocker X11Display::locker() const {
    const auto reading = lockReading();
    return reading ? reading->locker() : SessionLocker{.isPresent = false};
}

std::shared_ptr<const X11LockState> X11Display::lockReading() const {
    const MutexLock lock(mutex_);
    return lock_;
}

std::optional<TimeInterval> X11Display::sinceLastInput() const {
    if (!parts_) return std::nullopt;
    return parts_->idle->sinceLastInput();
}

TimeInterval X11Display::systemUptime() const {
    return unixtime::uptime();
}

bool X11Display::hasListenAccess() const {
    return parts_ && parts_->spaceKeys->hasListenAccess();
}

std::unique_ptr<SpaceKeys::Listening> X11Display::listen(std::function<void(Press)> onPress) {
    if (!parts_) return nullptr;
    auto listening = parts_->spaceKeys->listen(onPress);
    if (!listening) return nullptr;
    auto listener = std::make_shared<Listener>(
        Listener{.onPress = std::move(onPress), .listening = std::move(listening)});
    std::erase_if(listeners_, [](const auto& other) { return other.expired(); });
    listeners_.push_back(listener);
    return std::make_unique<Handle>(std::move(listener));
}

}  // namespace marrowby
