#pragma once

#include "Unlock/Linux/PlatformFactory.h"

namespace marrowby {

/// The program marrowby-unlock from its start to its end.
class UnlockProgram {
  public:
    /// The exit status: 0 also where another instance took over. A reason not to run is one
    /// sentence on the standard error. Main thread, before any other is started.
    [[nodiscard]] static int run(int argumentCount, char** arguments, PlatformFactory& factory);
};

}  // namespace marrowby
