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

std::function<bool()> StoredPasswordTyper::mayGoOn(TypingsUnderWay::Order order,
                                                   std::function<bool()> stillLocked) const {
    return [&credentials = credentials_, typings = typings_, order,
            stillLocked = std::move(stillLocked)] {
        return typings->stands(order) && credentials.isOpen() && stillLocked();
    };
}

void StoredPasswordTyper::expectTyping(std::function<bool()> stillLocked) {
    const auto order = typings_->order();
    workQueues_.background()->async([&keyEvents = keyEvents_, typings = typings_,
                                     posting = posting_, order,
                                     goesOn = mayGoOn(order, std::move(stillLocked))] {
        const TypingsUnderWay::Turn turn(*typings, order);
        if (!turn.isTaken() || !keyEvents.canType()) return;
        const MutexLock lock(*posting);
        keyEvents.wakeField(goesOn);
    });
}

void StoredPasswordTyper::typeStoredPassword(std::function<bool()> stillLocked,
                                             std::function<void(TypingOutcome)> completion) {
    const auto order = typings_->order();
    workQueues_.background()->async(
        [&credentials = credentials_, &keyEvents = keyEvents_, &mainThread = mainThread_,
         &clock = clock_, &words = words_, typings = typings_, posting = posting_, order,
         goesOn = mayGoOn(order, std::move(stillLocked)), completion = std::move(completion)] {
            const TypingsUnderWay::Turn turn(*typings, order);
            if (!turn.isTaken()) {
                mainThread.post([completion] { completion(TypingOutcome::Stopped{}); });
                return;
            }
            const MutexLock lock(*posting);
            std::optional<Date> firstKeyAt;
            const auto typing =
                credentials.withPassword([&](std::span<const std::uint8_t> password) {
                    return keystrokeinjector::typePassword(keyEvents, password, goesOn,
                                                           [&] { firstKeyAt = clock.now(); });
                });
            mainThread.post([outcome = outcomeOf(typing, firstKeyAt, words), completion] {
                completion(outcome);
            });
            // `typing` gives the keyboard back as it goes, which may take seconds.
        });
}

}  // namespace marrowby
