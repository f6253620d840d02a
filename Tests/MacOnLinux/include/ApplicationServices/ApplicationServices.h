// SPDX-License-Identifier: Apache-2.0
#pragma once
#import <CoreGraphics/CoreGraphics.h>

#ifdef __cplusplus
extern "C"
#endif
    Boolean
    AXIsProcessTrusted(void);
