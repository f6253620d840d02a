// SPDX-License-Identifier: Apache-2.0
#pragma once
#import <Foundation/Foundation.h>

enum { kIOHIDRequestTypeListenEvent = 1, kIOHIDAccessTypeGranted = 0, kIOHIDAccessTypeDenied = 1 };

#ifdef __cplusplus
extern "C" {
#endif
uint32_t IOHIDCheckAccess(uint32_t request);
bool IOHIDRequestAccess(uint32_t request);
#ifdef __cplusplus
}
#endif
