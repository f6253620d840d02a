// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/LockScreenServices/SessionUnlockAsker.h"

#include <string>
#include <utility>

namespace marrowby {

void SessionUnlockAsker::typeStoredPassword(std::function<bool()> stillLocked,
                                            std::function<void(TypingOutcome)> completion) {
    stop();
    const std::uint64_t number = ++attempts_;
    attempt_ = Attempt{
        .number = number,
        .stillLocked = std::move(stillLocked),
        .completion = std::move(completion),
        .timeout = services_.mainThread.at(services_.clock.now() + answerLimit, answerLimit / 10,
                                           weakSelf_.guarded([number](SessionUnlockAsker& self) {
                                               if (const Attempt* attempt = self.current(number))
                                                   self.runOut(*attempt);
                                           }))};
    services_.session.read(
        weakSelf_.guarded([number](SessionUnlockAsker& self, const SessionUnlockFacts& facts) {
            Attempt* const attempt = self.current(number);
            if (attempt != nullptr && !attempt->isAsked) self.decide(*attempt, facts);
        }));
}

void SessionUnlockAsker::decide(Attempt& attempt, const SessionUnlockFacts& facts) {
    if (!services_.isWanted() || !attempt.stillLocked()) return end(TypingOutcome::Stopped{});
    if (const auto refusal = SessionUnlockRule::refusal(facts))
        return end(TypingOutcome::NotAsked{description(*refusal)});
    attempt.isAsked = true;
    services_.session.ask(weakSelf_.guarded([number = attempt.number](
                                                SessionUnlockAsker& self,
                                                const std::expected<void, std::string>& answer) {
        if (self.current(number) == nullptr) return;
        if (answer) return self.end(TypingOutcome::Asked{});
        self.end(TypingOutcome::NotAsked{Phrase("The system refused: {detail}"), answer.error()});
    }));
}

void SessionUnlockAsker::runOut(const Attempt& attempt) {
    // A request without an answer may have been carried out.
    if (attempt.isAsked) return end(TypingOutcome::Asked{});
    end(TypingOutcome::NotAsked{description(SessionUnlockRule::Refusal::noSession)});
}

void SessionUnlockAsker::end(const TypingOutcome& outcome) {
    const auto ended = std::exchange(attempt_, std::nullopt);
    if (!ended) return;
    // Kept alive: the timer may be the caller.
    services_.mainThread.post([timeout = ended->timeout] {});
    ended->completion(outcome);
}

}  // namespace marrowby
