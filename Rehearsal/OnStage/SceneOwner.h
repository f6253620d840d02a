#pragma once

#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/OwnerCheck.h"

#include <memory>
#include <utility>

namespace marrowby {

/// The rehearsal's owner, who confirms every owner prompt, or cancels it, on the next turn of the
/// main loop.
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
