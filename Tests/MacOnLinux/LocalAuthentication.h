#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#import <Foundation/Foundation.h>

namespace marrowby {

/// The prompt before the owner.
struct FakeOwnerPrompt {
    bool canAsk = true;
    /// Why it can't ask; may be nil.
    NSError* whyNot = nil;
    /// What it was asked: “2 unlock the saved password”.
    std::vector<std::string> asked;
    /// Of the prompt that stands.
    void (^reply)(BOOL success, NSError* error) = nil;

    /// The owner answers, and the prompt goes.
    static void answer(bool success, NSError* error);
};

/// One for all; a test assigns a new one.
FakeOwnerPrompt& fakeOwnerPrompt();

}  // namespace marrowby
