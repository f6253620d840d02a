// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/InputIdle.h"

#include <expected>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Idle time of an X display, synthetic input included. Blocks for a round trip.
/// Nothing on a lost display.
class X11InputIdle final : public InputIdle {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11InputIdle>, std::string> create(
        const std::string& displayName);
    ~X11InputIdle() override;

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override;

  private:
    struct Display;
    explicit X11InputIdle(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
