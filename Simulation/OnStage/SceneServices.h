// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/MacPasswordVerifying.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/OwnerCheck.h"

#include <memory>
#include <string>
#include <utility>

namespace marrowby {

/// The rehearsal's account, with the made-up login password set last. Any thread.
class SceneAccount final : public MacPasswordVerifying {
  public:
    void setPassword(std::string password);

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> password) override;

  private:
    Mutex mutex_;
    std::string password_ GUARDED_BY(mutex_);
};

/// The rehearsal's owner check, confirmed or cancelled on the next turn of the main loop.
class SceneOwner final : public OwnerCheck {
  public:
    explicit SceneOwner(MainThread& mainThread,
                        std::shared_ptr<const bool> confirms = std::make_shared<bool>(true))
        : mainThread_(mainThread), confirms_(std::move(confirms)) {}

    [[nodiscard]] std::expected<void, std::string> canConfirm() override { return {}; }
    void confirmOwner(const std::string& reason, Completion completion) override;

  private:
    MainThread& mainThread_;
    const std::shared_ptr<const bool> confirms_;
};

}  // namespace marrowby
