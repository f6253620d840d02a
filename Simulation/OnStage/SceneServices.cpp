// SPDX-License-Identifier: Apache-2.0
#include "Simulation/OnStage/SceneServices.h"

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

void SceneOwner::confirmOwner(const std::string& /*reason*/, Completion completion) {
    mainThread_.post([completion = std::move(completion), confirms = *confirms_] {
        if (confirms) return completion({});
        completion(std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{})));
    });
}

}  // namespace marrowby
