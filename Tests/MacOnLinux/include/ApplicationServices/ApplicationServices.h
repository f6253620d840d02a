#pragma once
#import <CoreGraphics/CoreGraphics.h>

#ifdef __cplusplus
extern "C"
#endif
    Boolean
    AXIsProcessTrusted(void);
