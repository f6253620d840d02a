// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/FoundationSystemClock.h"

#import <Foundation/Foundation.h>

namespace marrowby {

Date FoundationSystemClock::now() const {
    return Date(TimeInterval(NSDate.timeIntervalSinceReferenceDate));
}

}  // namespace marrowby
