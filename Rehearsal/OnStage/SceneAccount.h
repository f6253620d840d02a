#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/MacPasswordVerifying.h"

#include <string>

namespace marrowby {

/// The rehearsal's one account, whose made-up login password is whatever was set last. Any thread.
class SceneAccount final : public MacPasswordVerifying {
  public:
    void setPassword(std::string password);

    [[nodiscard]] PasswordCheckResult check(std::span<const std::uint8_t> password) override;

  private:
    Mutex mutex_;
    std::string password_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
