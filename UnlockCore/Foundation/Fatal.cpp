// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/Fatal.h"

#include <cstdio>
#include <cstdlib>

namespace marrowby {

void fatal(const char* reason) {
    std::fprintf(stderr, "Marrowby Unlock stopped: %s\n", reason);
    std::abort();
}

}  // namespace marrowby
