// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/LocalAuthentication.h"

#include "Platforms/macOS/FoundationText.h"
#include "Tests/MacOnLinux/Counted.h"

#include <utility>

#import <LocalAuthentication/LocalAuthentication.h>

using marrowby::fakeOwnerPrompt;

namespace marrowby {

FakeOwnerPrompt& fakeOwnerPrompt() {
    static FakeOwnerPrompt prompt;
    return prompt;
}

void FakeOwnerPrompt::answer(bool success, NSError* error) {
    void (^const reply)(BOOL, NSError*) = std::exchange(fakeOwnerPrompt().reply, nil);
    if (reply) reply(success, error);
}

}  // namespace marrowby

@implementation LAContext
- (instancetype)init {
    self = [super init];
    return self ? marrowby::counted(self) : nil;
}
/// Deallocation closes the prompt.
- (void)dealloc {
    marrowby::FakeOwnerPrompt::answer(
        false, [NSError errorWithDomain:@"com.apple.LocalAuthentication" code:-9 userInfo:nil]);
}
- (BOOL)canEvaluatePolicy:(LAPolicy)__unused policy error:(NSError**)error {
    *error = fakeOwnerPrompt().whyNot;
    return fakeOwnerPrompt().canAsk;
}
- (void)evaluatePolicy:(LAPolicy)policy
       localizedReason:(NSString*)reason
                 reply:(void (^)(BOOL, NSError*))reply {
    if (reason.length == 0)
        [NSException raise:NSInvalidArgumentException format:@"There is no reason."];
    fakeOwnerPrompt().asked.push_back(std::to_string(policy) + " " + marrowby::plainText(reason));
    fakeOwnerPrompt().reply = reply;
}
@end
