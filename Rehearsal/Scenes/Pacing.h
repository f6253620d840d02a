#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Calls a step over and over, each call as long after the one before as that one returned.
/// Destroying it waits for a step in progress; none comes after that. Not to be destroyed by its
/// own step.
class Pacing {
  public:
    virtual ~Pacing() = default;
};

/// Begins a pacing; the step is never called from within.
using StartPacing = std::function<std::unique_ptr<Pacing>(std::function<TimeInterval()> step)>;

/// Paces by the steady clock, on a thread of its own. The first step comes at once; a step that
/// comes late moves those after it.
[[nodiscard]] std::unique_ptr<Pacing> startThreadPacing(std::function<TimeInterval()> step);

}  // namespace marrowby
