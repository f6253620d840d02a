#pragma once

#include "UnlockCore/Platform/ProcessActivities.h"

namespace marrowby {

/// NSProcessInfo's activities, which keep App Nap off. None of its calls throws or fails.
class FoundationProcessActivities final : public ProcessActivities {
  public:
    [[nodiscard]] std::unique_ptr<Activity> begin(const std::string& reason) override;
};

}  // namespace marrowby
