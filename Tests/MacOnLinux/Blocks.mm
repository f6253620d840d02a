// Blocks as objects. The linker gives these classes the names that compiled blocks know. Without
// ARC.

#import <Foundation/Foundation.h>

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
