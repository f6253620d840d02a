// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ProcessHardening.h"

#include <sys/prctl.h>
#include <sys/resource.h>

namespace marrowby {

bool makeProcessUndumpable() {
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    return ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && ::setrlimit(RLIMIT_CORE, &none) == 0;
}

}  // namespace marrowby
