#include "Platforms/Linux/UnixSystemClock.h"

#include "Platforms/Linux/UnixTime.h"

#include <chrono>

namespace marrowby {

Date UnixSystemClock::now() const {
    const TimeInterval sinceUnixEpoch = std::chrono::system_clock::now().time_since_epoch();
    return Date(sinceUnixEpoch - unixtime::toDateEpoch);
}

}  // namespace marrowby
