// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/StoredPasswordTyper.h"

#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace marrowby {

namespace {

TypingOutcome outcomeOf(const std::expected<KeystrokeTyping, StorageError>& typing,
                        const std::optional<Date>& firstKeyAt, const PlatformWords& words) {
    if (!typing) return TypingOutcome::Failed{description(typing.error(), words)};
    const auto& outcome = typing->outcome();
    if (outcome) return TypingOutcome::Typed{firstKeyAt};
    if (outcome.error() == KeystrokeError::notLocked) return TypingOutcome::Stopped{};
    return TypingOutcome::Failed{description(outcome.error(), words)};
}

}  // namespace

void StoredPasswordTyper::expectTyping(std::function<bool()> stillLocked) {
    workQueues_.background()->async(
        [&credentials = credentials_, &keyEvents = keyEvents_, typings = typings_,
         posting = posting_, order = typings_->order(), stillLocked = std::move(stillLocked)] {
            const TypingsUnderWay::Turn turn(*typings, order);
            if (!turn.isTaken() || !keyEvents.canType()) return;
            const MutexLock lock(*posting);
            keyEvents.wakeField([&credentials, typings, order, stillLocked] {
                return typings->stands(order) && credentials.isOpen() && stillLocked();
            });
        });
}

void StoredPasswordTyper::typeStoredPassword(std::function<bool()> stillLocked,
                                             std::function<void(TypingOutcome)> completion) {
    workQueues_.background()->async(
        [&credentials = credentials_, &keyEvents = keyEvents_, &mainThread = mainThread_,
         &clock = clock_, &words = words_, typings = typings_, posting = posting_,
         order = typings_->order(), stillLocked = std::move(stillLocked),
         completion = std::move(completion)] {
            const TypingsUnderWay::Turn turn(*typings, order);
            if (!turn.isTaken()) {
                mainThread.post([completion] { completion(TypingOutcome::Stopped{}); });
                return;
            }
            const auto mayGoOn = [&credentials, typings, order, stillLocked] {
                return typings->stands(order) && credentials.isOpen() && stillLocked();
            };
            const MutexLock lock(*posting);
            std::optional<Date> firstKeyAt;
            const auto typing =
                credentials.withPassword([&](std::span<const std::uint8_t> password) {
                    return keystrokeinjector::typePassword(keyEvents, password, mayGoOn,
                                                           [&] { firstKeyAt = clock.now(); });
                });
            mainThread.post([outcome = outcomeOf(typing, firstKeyAt, words), completion] {
                completion(outcome);
            });
            // `typing` gives the keyboard back as it goes, which may take seconds.
        });
}

}  // namespace marrowby
