// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/OwnKeystrokes.h"

#include <cmath>
#include <ratio>
#include <utility>

namespace marrowby {

namespace {

/// Longer than any pause within one typing. User input in such a pause counts as our own.
constexpr TimeInterval pauseWithinBurst{0.6};
/// Tolerance between the event system's times and ours.
constexpr TimeInterval clockTolerance{0.1};
/// How late a busy main thread may receive a key.
constexpr TimeInterval deliveryLimit{1};

}  // namespace

std::optional<OwnKeystrokes::Burst> OwnKeystrokes::burst(TimeInterval inputUptime) const {
    const MutexLock lock(mutex_);
    if (!last_ || inputUptime < last_->begin - clockTolerance ||
        inputUptime > last_->end + clockTolerance) {
        return std::nullopt;
    }
    return last_;
}

bool OwnKeystrokes::mayArriveNow() const {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    return last_ && now <= last_->end + deliveryLimit;
}

void OwnKeystrokes::begin() {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    const bool continues = last_ && now <= last_->end + pauseWithinBurst;
    last_ = Burst{.begin = continues ? last_->begin : now};
}

void OwnKeystrokes::end() {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    if (last_) last_->end = now;
}

std::optional<TimeInterval> ForeignInputIdle::sinceLastInput() const {
    const auto idle = idle_.sinceLastInput();
    if (!idle) return std::nullopt;
    const TimeInterval now = systemUptime();
    // Our own keys do not count: then it is the time since the input before them.
    const auto own = own_.burst(now - *idle);
    if (own) return now - lastForeignInput_.value_or(own->begin);
    lastForeignInput_ = now - *idle;
    return idle;
}

namespace {

class TrackedSource final : public KeyEventSource {
  public:
    TrackedSource(std::unique_ptr<KeyEventSource> source, OwnKeystrokes& own)
        : source_(std::move(source)), own_(own) {}

    [[nodiscard]] bool isAdmitted(const std::function<bool()>& stillLocked) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->isAdmitted(stillLocked);
    }
    [[nodiscard]] KeyPace pace() const override { return source_->pace(); }
    [[nodiscard]] bool post(const KeyPress& press) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->post(press);
    }
    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        const OwnKeystrokes::Posting posting(own_);
        return source_->postText(units, down);
    }
    [[nodiscard]] bool isUndisturbed() override { return source_->isUndisturbed(); }
    void settle(const std::function<bool()>& stillLocked) override { source_->settle(stillLocked); }

  private:
    std::unique_ptr<KeyEventSource> source_;
    OwnKeystrokes& own_;
};

}  // namespace

std::unique_ptr<KeyEventSource> TrackedKeyEvents::makeSource(std::span<const char16_t> text,
                                                             std::span<const EditingKey> keys) {
    auto source = keyEvents_.makeSource(text, keys);
    if (!source) return nullptr;
    return std::make_unique<TrackedSource>(std::move(source), own_);
}

}  // namespace marrowby
