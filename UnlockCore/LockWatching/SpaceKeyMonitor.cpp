// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

namespace marrowby {

void SpaceKeyMonitor::start() {
    if (listening_) return;
    listening_ = keys_.listen([this](SpaceKeys::Press press) { handle(press); });
}

void SpaceKeyMonitor::handle(SpaceKeys::Press press) const {
    if (press.isSynthetic && own_.mayArriveNow()) return;
    // Copied: the callback may destroy this monitor.
    if (const auto report = onSpace) report();
}

}  // namespace marrowby
