#pragma once

#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <cmath>
#include <cstdint>
#include <optional>

namespace marrowby {

/// A computer that was started 1000 s before the fake was made and has had no input since 500 s
/// ago, until the test makes some. Its time is the given clock's.
class FakeInputIdle final : public InputIdle {
  public:
    explicit FakeInputIdle(const SystemClock& clock) : clock_(clock) {}

    [[nodiscard]] TimeInterval secondsSinceLastInput() const override {
        return unusable_ ? *unusable_ : clock_.now() - lastInput_;
    }
    [[nodiscard]] std::optional<std::uint64_t> registryIdleNanoseconds() const override {
        if (!hasRegistry_) return std::nullopt;
        return static_cast<std::uint64_t>(
            std::llround((clock_.now() - lastInput_).count() * 1'000'000'000));
    }
    [[nodiscard]] TimeInterval systemUptime() const override { return clock_.now() - started_; }

    /// A key, a button or the pointer, now or a moment ago.
    void touch(TimeInterval ago = {}) { lastInput_ = clock_.now() - ago; }
    /// Overrides what the event system reports.
    void setUnusable(std::optional<TimeInterval> answer) { unusable_ = answer; }
    void setHasRegistry(bool has) { hasRegistry_ = has; }

  private:
    const SystemClock& clock_;
    const Date started_ = clock_.now() - TimeInterval(1000);
    Date lastInput_ = clock_.now() - TimeInterval(500);
    std::optional<TimeInterval> unusable_;
    bool hasRegistry_ = true;
};

}  // namespace marrowby
