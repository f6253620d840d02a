// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/ProcessHardening.h"

#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/types.h>

namespace marrowby {

bool makeProcessUndumpable() {
    const rlimit none{.rlim_cur = 0, .rlim_max = 0};
    return ::ptrace(PT_DENY_ATTACH, 0, nullptr, 0) == 0 && ::setrlimit(RLIMIT_CORE, &none) == 0;
}

}  // namespace marrowby
