#pragma once

#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/OwnerAuthentication.h"

#include <memory>

namespace marrowby {

/// The rehearsal's owner, who confirms every owner prompt on the next turn of the main loop.
class SceneOwner final : public OwnerAuthentication {
  public:
    explicit SceneOwner(MainThread& mainThread) : mainThread_(mainThread) {}
    [[nodiscard]] std::shared_ptr<OwnerAuthenticationContext> makeContext() override;

  private:
    MainThread& mainThread_;
};

}  // namespace marrowby
