// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/LockWatching/UnlockTrigger.h"
#include "UnlockCore/Platform/SessionUnlocking.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace marrowby {

enum class UnlockOnboardingStep : std::uint8_t {
    welcome,
    security,
    camera,
    accessibility,
    enrol,
    name,
    password,
    /// To having the desktop open the lock.
    consent,
    triggers,
    done,
};

/// The first run, another enrolled face, or a new login password.
enum class UnlockOnboardingMode : std::uint8_t { setUp, addLook, updatePassword };

struct UnlockOnboardingFacts {
    /// The explanation of what is safe was acknowledged.
    bool understood = false;
    bool cameraAllowed = false;
    bool accessibilityAllowed = false;
    bool enrolmentComplete = false;
    std::string name;
    bool passwordSaved = false;
    /// The user said yes to having the desktop open the lock, and the face is saved.
    bool consentSaved = false;
    /// As chosen; no rule asks for them.
    UnlockTriggers triggers;
};

/// The steps of the welcome window. A value.
class UnlockOnboardingFlow {
  public:
    explicit UnlockOnboardingFlow(UnlockOnboardingMode mode,
                                  LockOpening opening = LockOpening::typing);

    /// Leaves out the steps that this way of opening the lock does not need. Where the current one
    /// is left out, goes back to the last that stays.
    void follow(LockOpening opening);

    [[nodiscard]] UnlockOnboardingMode mode() const { return mode_; }
    [[nodiscard]] UnlockOnboardingStep step() const { return step_; }
    /// Once true, stays true.
    [[nodiscard]] bool isFinished() const { return isFinished_; }
    /// Whether the last move went forward.
    [[nodiscard]] bool forward() const { return forward_; }

    /// Of this mode.
    [[nodiscard]] std::span<const UnlockOnboardingStep> steps() const;
    /// The current step's place among them.
    [[nodiscard]] std::size_t progress() const;
    [[nodiscard]] bool isLastStep() const;

    /// Whether what the current step asks for is there.
    [[nodiscard]] bool canGoForward(const UnlockOnboardingFacts& facts) const;
    /// Whether it moved or finished.
    bool goForward(const UnlockOnboardingFacts& facts);
    [[nodiscard]] bool canGoBack() const;
    void goBack();
    /// Call when a permission may have changed; leaves the step that waited for it. Whether it did.
    bool permissionChanged(const UnlockOnboardingFacts& facts);

  private:
    UnlockOnboardingMode mode_;
    LockOpening opening_;
    UnlockOnboardingStep step_;
    bool isFinished_ = false;
    bool forward_ = true;
};

}  // namespace marrowby
