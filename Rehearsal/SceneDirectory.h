#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/Directory.h"

#include <string>

namespace marrowby {

/// The rehearsal's one account, whose made-up login password is whatever was set last. Any thread.
class SceneDirectory final : public Directory {
  public:
    void setPassword(std::string password);

    [[nodiscard]] Result<std::unique_ptr<Node>> openNode(std::uint32_t type) override;

  private:
    class Account;
    [[nodiscard]] bool isRight(std::span<const std::uint8_t> password) const;

    mutable Mutex mutex_;
    std::string password_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
