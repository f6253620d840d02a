// What is compiled without ARC: blocks as objects, and the end of every object.

#import <Foundation/Foundation.h>

#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSObject (MacOnLinux)
/// In place of GNUstep's own, which knows of no associations.
- (void)dealloc {
    objc_removeAssociatedObjects(self);
    NSDeallocateObject(self);
}
@end

// The linker gives these classes the names that compiled blocks know.

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
