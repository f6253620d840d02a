// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <optional>

namespace marrowby {

/// A computer that was started 1000 s before the fake was made and has had no input since 500 s
/// ago, until the test makes some. Its time is the given clock's.
class FakeInputIdle final : public InputIdle {
  public:
    explicit FakeInputIdle(const SystemClock& clock) : clock_(clock) {}

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override {
        if (!isKnown_) return std::nullopt;
        return clock_.now() - lastInput_;
    }
    [[nodiscard]] TimeInterval systemUptime() const override { return clock_.now() - started_; }

    /// A key, a button or the pointer, now or a moment ago.
    void touch(TimeInterval ago = {}) { lastInput_ = clock_.now() - ago; }
    void setKnown(bool isKnown) { isKnown_ = isKnown; }

  private:
    const SystemClock& clock_;
    const Date started_ = clock_.now() - TimeInterval(1000);
    Date lastInput_ = clock_.now() - TimeInterval(500);
    bool isKnown_ = true;
};

}  // namespace marrowby
