// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ProcessActivities.h"

namespace marrowby {

/// NSProcessInfo activities, which prevent App Nap.
class FoundationProcessActivities final : public ProcessActivities {
  public:
    [[nodiscard]] std::unique_ptr<Activity> begin(const std::string& reason) override;
};

}  // namespace marrowby
