// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Calls a step repeatedly; each call returns the delay until the next. Destroying it waits for a
/// running step, and no step follows. Must not be destroyed by its own step.
class Pacing {
  public:
    virtual ~Pacing() = default;
};

/// Starts a pacing; does not call the step itself.
using StartPacing = std::function<std::unique_ptr<Pacing>(std::function<TimeInterval()> step)>;

/// Paces by the steady clock on its own thread. The first step runs at once; a late step delays the
/// following ones.
[[nodiscard]] std::unique_ptr<Pacing> startThreadPacing(std::function<TimeInterval()> step);

}  // namespace marrowby
