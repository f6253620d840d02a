// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Linux/PlatformFactory.h"

namespace marrowby {

class UnlockProgram {
  public:
    /// Returns the exit status: 0 also when another instance took over, a command's as
    /// CommandReply has it. A reason not to run is one sentence on standard error. Main thread,
    /// before any other is started.
    [[nodiscard]] static int run(int argumentCount, char** arguments, PlatformFactory& factory);
};

}  // namespace marrowby
