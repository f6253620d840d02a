// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/UnixClock.h"

#include <chrono>

namespace marrowby {

Date UnixSystemClock::now() const {
    const TimeInterval sinceUnixEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date(sinceUnixEpoch - unixtime::toDateEpoch);
}

}  // namespace marrowby
