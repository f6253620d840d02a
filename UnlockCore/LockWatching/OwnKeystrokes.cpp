#include "UnlockCore/LockWatching/OwnKeystrokes.h"

namespace marrowby {
namespace {

/// Pauses within one typing are shorter; a user who types in them is not told apart.
constexpr TimeInterval pauseWithinBurst{0.6};
/// How far the event system's times and ours may be apart.
constexpr TimeInterval clockTolerance{0.1};
/// How late a busy main thread may hear of a key.
constexpr TimeInterval deliveryLimit{1};

}  // namespace

std::optional<OwnKeystrokes::Burst> OwnKeystrokes::burst(TimeInterval inputUptime) const {
    const MutexLock lock(mutex_);
    if (!last_ || inputUptime < last_->begin - clockTolerance ||
        inputUptime > last_->end + clockTolerance) {
        return std::nullopt;
    }
    return last_;
}

bool OwnKeystrokes::mayArriveNow() const {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    return last_ && now <= last_->end + deliveryLimit;
}

void OwnKeystrokes::begin() {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    const bool continues = last_ && now <= last_->end + pauseWithinBurst;
    last_ = Burst{.begin = continues ? last_->begin : now};
}

void OwnKeystrokes::end() {
    const TimeInterval now = uptimes_.systemUptime();
    const MutexLock lock(mutex_);
    if (last_) last_->end = now;
}

}  // namespace marrowby
