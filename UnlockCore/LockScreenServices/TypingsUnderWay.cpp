// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/TypingsUnderWay.h"

namespace marrowby {

TypingsUnderWay::Order TypingsUnderWay::order() const {
    const MutexLock lock(mutex_);
    return next_;
}

bool TypingsUnderWay::stands(Order order) const {
    const MutexLock lock(mutex_);
    return order == next_;
}

void TypingsUnderWay::stop() {
    const MutexLock lock(mutex_);
    ++next_;
}

void TypingsUnderWay::end() {
    const MutexLock lock(mutex_);
    ++next_;
    while (running_ > 0)
        finished_.wait(mutex_);
}

bool TypingsUnderWay::begin(Order order) {
    const MutexLock lock(mutex_);
    if (order != next_) return false;
    ++running_;
    return true;
}

void TypingsUnderWay::finish() {
    const MutexLock lock(mutex_);
    --running_;
    finished_.notify_all();
}

}  // namespace marrowby
