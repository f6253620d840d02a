// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <optional>

namespace marrowby {

/// Time since the last key, button or pointer input. Main thread.
class InputIdle {
  public:
    virtual ~InputIdle() = default;
    /// Not negative; nothing while it is unknown.
    [[nodiscard]] virtual std::optional<TimeInterval> sinceLastInput() const = 0;
    /// Time since the computer started, not counting sleep; never goes back. Any thread.
    [[nodiscard]] virtual TimeInterval systemUptime() const = 0;
};

}  // namespace marrowby
