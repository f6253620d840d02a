// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/Counted.h"

#import <objc/runtime.h>

namespace {

int alive = 0;

}  // namespace

@interface MacCount : NSObject
@end
@implementation MacCount
- (void)dealloc {
    --alive;
}
@end

namespace marrowby {

id counted(id object) {
    static const char key = 0;
    ++alive;
    objc_setAssociatedObject(object, &key, [[MacCount alloc] init],
                             OBJC_ASSOCIATION_RETAIN_NONATOMIC);
    return object;
}

int countedAlive() {
    return alive;
}

}  // namespace marrowby
