// SPDX-License-Identifier: Apache-2.0
#pragma once

// What this application calls of OpenDirectory, declared after its public documentation for a check
// on machines without it. A Mac never sees this file.

#import <Foundation/Foundation.h>

typedef NSString* ODRecordType NS_STRING_ENUM;
typedef NSString* ODAttributeType NS_STRING_ENUM;
typedef uint32_t ODNodeType;

FOUNDATION_EXPORT NSString* const ODFrameworkErrorDomain;

@interface ODSession : NSObject
+ (null_unspecified instancetype)defaultSession;
@end

@interface ODRecord : NSObject
- (BOOL)verifyPassword:(null_unspecified NSString*)inPassword
                 error:(out NSError* _Nullable* _Nullable)outError;
@end

@interface ODNode : NSObject
+ (null_unspecified instancetype)nodeWithSession:(null_unspecified ODSession*)inSession
                                            type:(ODNodeType)inType
                                           error:(out NSError* _Nullable* _Nullable)outError;
- (null_unspecified ODRecord*)recordWithRecordType:(null_unspecified ODRecordType)inRecordType
                                              name:(null_unspecified NSString*)inRecordName
                                        attributes:(null_unspecified id)inAttributes
                                             error:(out NSError* _Nullable* _Nullable)outError;
@end
