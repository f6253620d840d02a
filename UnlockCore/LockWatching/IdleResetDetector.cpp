#include "UnlockCore/LockWatching/IdleResetDetector.h"

namespace marrowby {

std::optional<TimeInterval> IdleResetDetector::see(TimeInterval inputUptime) {
    if (!lastEventUptime) {
        lastEventUptime = inputUptime;
        return std::nullopt;
    }
    const TimeInterval gap = inputUptime - *lastEventUptime;
    if (!(gap > tolerance)) return std::nullopt;
    lastEventUptime = inputUptime;
    return gap;
}

}  // namespace marrowby
