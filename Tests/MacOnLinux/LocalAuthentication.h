// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// A fake authentication prompt.
struct FakeOwnerPrompt {
    bool canAsk = true;
    /// Error of canEvaluate; may be nil.
    NSError* whyNot = nil;
    /// Policies and reasons asked: “2 unlock the saved password”.
    std::vector<std::string> asked;
    /// Reply block of the open prompt.
    void (^reply)(BOOL success, NSError* error) = nil;

    /// Answers and closes the prompt.
    static void answer(bool success, NSError* error);
};

/// A singleton; tests assign a new value.
FakeOwnerPrompt& fakeOwnerPrompt();

}  // namespace marrowby
