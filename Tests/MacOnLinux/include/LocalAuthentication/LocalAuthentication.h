// SPDX-License-Identifier: Apache-2.0
#pragma once
#import <Foundation/Foundation.h>

typedef NSInteger LAPolicy;

@interface LAContext : NSObject
- (BOOL)canEvaluatePolicy:(LAPolicy)policy error:(NSError**)error;
- (void)evaluatePolicy:(LAPolicy)policy
       localizedReason:(NSString*)reason
                 reply:(void (^)(BOOL success, NSError* error))reply;
@end
