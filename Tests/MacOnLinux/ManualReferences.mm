// SPDX-License-Identifier: Apache-2.0

// Compiled without ARC: block objects and NSObject's dealloc.

#import <Foundation/Foundation.h>

#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSObject (MacOnLinux)
/// Replaces GNUstep's, which does not remove associations.
- (void)dealloc {
    objc_removeAssociatedObjects(self);
    NSDeallocateObject(self);
}
@end

// The linker gives these classes the names that compiled blocks refer to.

@interface MacBlock : NSObject
@end

@implementation MacBlock
- (id)copy {
    return static_cast<id>(_Block_copy(self));
}
- (id)copyWithZone:(NSZone*)__unused zone {
    return static_cast<id>(_Block_copy(self));
}
- (id)retain {
    return static_cast<id>(_Block_copy(self));
}
- (oneway void)release {
    _Block_release(self);
}
@end

@interface MacStackBlock : MacBlock
@end
@implementation MacStackBlock
@end

@interface MacGlobalBlock : MacBlock
@end
@implementation MacGlobalBlock
@end

@interface MacMallocBlock : MacBlock
@end
@implementation MacMallocBlock
@end
