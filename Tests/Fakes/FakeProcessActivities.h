// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/ProcessActivities.h"

namespace marrowby {

/// Counts the activities that are held.
class FakeProcessActivities final : public ProcessActivities {
  public:
    int held = 0;

    [[nodiscard]] std::unique_ptr<Activity> begin(const std::string& /*reason*/) override {
        return std::make_unique<Counted>(held);
    }

  private:
    class Counted final : public Activity {
      public:
        explicit Counted(int& held) : held_(held) { ++held_; }
        Counted(const Counted&) = delete;
        Counted& operator=(const Counted&) = delete;
        ~Counted() override { --held_; }

      private:
        int& held_;
    };
};

}  // namespace marrowby
