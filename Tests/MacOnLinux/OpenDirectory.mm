// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/OpenDirectory.h"

#include "Platforms/macOS/FoundationText.h"
#include "Tests/MacOnLinux/Counted.h"

#import <OpenDirectory/OpenDirectory.h>

using marrowby::fakeAccounts;

namespace marrowby {

FakeAccounts& fakeAccounts() {
    static FakeAccounts accounts;
    return accounts;
}

}  // namespace marrowby

static NSError* directoryError(NSInteger code, NSString* text) {
    return [NSError errorWithDomain:@"com.apple.OpenDirectory"
                               code:code
                           userInfo:@{NSLocalizedDescriptionKey : text}];
}

static void called(const std::string& call) {
    fakeAccounts().calls.push_back(call);
    [fakeAccounts().exception raise];
}

@implementation ODSession
+ (instancetype)defaultSession {
    return [[self alloc] init];
}
@end

@interface ODRecord ()
@property(nonatomic, copy) NSString* name;
@end
@implementation ODRecord
- (BOOL)verifyPassword:(NSString*)password error:(NSError**)error {
    called("verify");
    if ([fakeAccounts().passwords[self.name] isEqual:password]) return YES;
    *error = directoryError(5000, @"Credentials could not be verified.");
    return NO;
}
@end

@implementation ODNode
+ (instancetype)nodeWithSession:(ODSession*)session type:(ODNodeType)type error:(NSError**)error {
    called("node " + std::to_string(type));
    if (session) return marrowby::counted([[self alloc] init]);
    *error = directoryError(2000, @"There is no session.");
    return nil;
}
- (ODRecord*)recordWithRecordType:(ODRecordType)type
                             name:(NSString*)name
                       attributes:(id)__unused attributes
                            error:(NSError**)error {
    called("record " + marrowby::plainText(type));
    if (!fakeAccounts().passwords[name]) {
        *error = directoryError(4001, @"No such record.");
        return nil;
    }
    ODRecord* const found = marrowby::counted([[ODRecord alloc] init]);
    found.name = name;
    return found;
}
@end
