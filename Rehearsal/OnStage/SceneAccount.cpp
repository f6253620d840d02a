#include "Rehearsal/OnStage/SceneAccount.h"

#include <algorithm>
#include <utility>

namespace marrowby {

void SceneAccount::setPassword(std::string password) {
    const MutexLock lock(mutex_);
    password_ = std::move(password);
}

PasswordCheckResult SceneAccount::check(std::span<const std::uint8_t> password) {
    const MutexLock lock(mutex_);
    const bool isRight = std::ranges::equal(password, password_, {}, {},
                                            [](char c) { return static_cast<std::uint8_t>(c); });
    if (isRight) return PasswordCheckResult::Correct{};
    return PasswordCheckResult::Incorrect{};
}

}  // namespace marrowby
