#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

namespace marrowby {

void SpaceKeyMonitor::start() {
    if (listening_) return;
    listening_ = keys_.listen([this](SpaceKeys::Press press) { handle(press); });
}

void SpaceKeyMonitor::handle(SpaceKeys::Press press) const {
    if (press.isSynthetic && own_.mayArriveNow()) return;
    // A copy, for the owner may let go of this monitor in it.
    if (const auto report = onSpace) report();
}

}  // namespace marrowby
