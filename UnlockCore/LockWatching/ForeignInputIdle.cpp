#include "UnlockCore/LockWatching/ForeignInputIdle.h"

#include <cmath>
#include <ratio>

namespace marrowby {

TimeInterval ForeignInputIdle::secondsSinceLastInput() const {
    return withoutOwnKeys(idle_.secondsSinceLastInput());
}

std::optional<std::uint64_t> ForeignInputIdle::registryIdleNanoseconds() const {
    using Nanoseconds = std::chrono::duration<double, std::nano>;
    const auto idle = idle_.registryIdleNanoseconds();
    if (!idle) return std::nullopt;
    const Nanoseconds foreign = withoutOwnKeys(Nanoseconds(static_cast<double>(*idle)));
    return static_cast<std::uint64_t>(foreign.count());
}

TimeInterval ForeignInputIdle::withoutOwnKeys(TimeInterval idle) const {
    if (!std::isfinite(idle.count())) return idle;
    const TimeInterval now = systemUptime();
    const auto own = own_.burst(now - idle);
    if (own) return now - lastForeignInput_.value_or(own->begin);
    lastForeignInput_ = now - idle;
    return idle;
}

}  // namespace marrowby
