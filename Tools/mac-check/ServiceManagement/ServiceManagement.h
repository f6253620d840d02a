// SPDX-License-Identifier: Apache-2.0
#pragma once

// What this application calls of ServiceManagement, declared after its public documentation for a
// check on machines without it. A Mac never sees this file.

#import <Foundation/Foundation.h>

typedef NS_ENUM(NSInteger, SMAppServiceStatus) {
    SMAppServiceStatusNotRegistered,
    SMAppServiceStatusEnabled,
    SMAppServiceStatusRequiresApproval,
    SMAppServiceStatusNotFound
} API_AVAILABLE(macos(13.0));

API_AVAILABLE(macos(13.0))
@interface SMAppService : NSObject
@property(class, readonly, nonnull) SMAppService* mainAppService;
@property(readonly) SMAppServiceStatus status;
- (BOOL)registerAndReturnError:(out NSError* _Nullable* _Nullable)error;
- (BOOL)unregisterAndReturnError:(out NSError* _Nullable* _Nullable)error;
@end
