// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/PasswordCheck.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <optional>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

/// None for the right password.
std::optional<std::string> refusalOf(const PasswordCheckResult& result,
                                     const PlatformWords& words) {
    if (std::holds_alternative<PasswordCheckResult::Correct>(result)) return std::nullopt;
    if (const auto* unavailable = std::get_if<PasswordCheckResult::Unavailable>(&result)) {
        return translated("The password couldn’t be checked, so nothing was saved. {explanation}",
                          {{"explanation", unavailable->explanation}});
    }
    return translated("That isn’t your {password}.", {{"password", words.password.inSentence}});
}

}  // namespace

void PasswordCheck::check(SecretBytes password, std::function<void(const Result&)> then) {
    if (password.empty()) {
        then(std::unexpected(translated(description(CredentialError::empty))));
        return;
    }
    if (const auto objection = typablepassword::objection(password.values())) {
        password.wipe();
        then(std::unexpected(translated(*objection)));
        return;
    }
    const auto held = std::make_shared<SecretBytes>(std::move(password));
    const auto reply =
        weakSelf_.guarded([then = std::move(then)](const PasswordCheck& /*self*/,
                                                   const Result& result) { then(result); });
    platform_.queues.background()->async([held, reply, &verifier = platform_.passwordVerifier,
                                          &mainThread = platform_.mainThread,
                                          &words = platform_.words] {
        const auto refusal = refusalOf(verifier.check(held->values()), words);
        if (refusal) held->wipe();
        mainThread.post([reply, result = refusal ? Result(std::unexpected(*refusal))
                                                 : Result(held)] { reply(result); });
    });
}

}  // namespace marrowby
