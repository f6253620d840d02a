// SPDX-License-Identifier: Apache-2.0
#pragma once
#import <Foundation/Foundation.h>

enum {
    kVK_ANSI_U = 0x20,
    kVK_Return = 0x24,
    kVK_Delete = 0x33,
    kVK_Command = 0x37,
    kVK_Shift = 0x38,
    kVK_Control = 0x3B,
    kVK_RightArrow = 0x7C
};

#ifdef __cplusplus
extern "C"
#endif
    Boolean
    IsSecureEventInputEnabled(void);
