// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/FoundationProcessActivities.h"

#include "Platforms/macOS/FoundationText.h"

namespace marrowby {

static_assert(macactivity::userInitiatedAllowingIdleSystemSleep ==
              NSActivityUserInitiatedAllowingIdleSystemSleep);

namespace {

class HeldActivity final : public ProcessActivities::Activity {
  public:
    explicit HeldActivity(id<NSObject> token) : token_(token) {}
    HeldActivity(const HeldActivity&) = delete;
    HeldActivity& operator=(const HeldActivity&) = delete;
    ~HeldActivity() override { [NSProcessInfo.processInfo endActivity:token_]; }

  private:
    const id<NSObject> token_;
};

}  // namespace

std::unique_ptr<ProcessActivities::Activity> FoundationProcessActivities::begin(
    const std::string& reason) {
    return std::make_unique<HeldActivity>([NSProcessInfo.processInfo
        beginActivityWithOptions:static_cast<NSActivityOptions>(
                                     macactivity::userInitiatedAllowingIdleSystemSleep)
                          reason:foundationText(reason)]);
}

}  // namespace marrowby
