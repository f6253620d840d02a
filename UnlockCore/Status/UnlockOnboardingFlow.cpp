// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Status/UnlockOnboardingFlow.h"

#include "UnlockCore/Foundation/Text.h"

#include <algorithm>
#include <array>
#include <ranges>

namespace marrowby {

namespace {

using Step = UnlockOnboardingStep;

constexpr std::array setUpSteps{Step::welcome,       Step::security, Step::camera,
                                Step::accessibility, Step::enrol,    Step::name,
                                Step::password,      Step::triggers, Step::done};
constexpr std::array askingSteps{Step::welcome, Step::security, Step::camera,   Step::enrol,
                                 Step::name,    Step::consent,  Step::triggers, Step::done};
constexpr std::array closedSteps{Step::welcome};
constexpr std::array addLookSteps{Step::enrol, Step::name};
constexpr std::array updatePasswordSteps{Step::password};

std::span<const Step> stepsOf(UnlockOnboardingMode mode, LockOpening opening) {
    switch (mode) {
        case UnlockOnboardingMode::setUp:
            if (isClosed(opening)) return closedSteps;
            if (opening == LockOpening::asking) return askingSteps;
            return setUpSteps;
        case UnlockOnboardingMode::addLook:
            return addLookSteps;
        case UnlockOnboardingMode::updatePassword:
            return updatePasswordSteps;
    }
    return {};
}

}  // namespace

UnlockOnboardingFlow::UnlockOnboardingFlow(UnlockOnboardingMode mode, LockOpening opening)
    : mode_(mode), opening_(opening), step_(stepsOf(mode, opening).front()) {}

void UnlockOnboardingFlow::follow(LockOpening opening) {
    if (isFinished_) return;
    opening_ = opening;
    const auto kept = std::ranges::find_if(steps() | std::views::reverse,
                                           [this](Step step) { return step <= step_; });
    step_ = *kept;
}

std::span<const UnlockOnboardingStep> UnlockOnboardingFlow::steps() const {
    return stepsOf(mode_, opening_);
}

std::size_t UnlockOnboardingFlow::progress() const {
    const auto place = std::ranges::find(steps(), step_);
    return place == steps().end() ? 0 : static_cast<std::size_t>(place - steps().begin());
}

bool UnlockOnboardingFlow::isLastStep() const {
    return step_ == steps().back();
}

bool UnlockOnboardingFlow::canGoForward(const UnlockOnboardingFacts& facts) const {
    switch (step_) {
        case Step::security:
            return facts.understood;
        case Step::camera:
            return facts.cameraAllowed;
        case Step::accessibility:
            return facts.accessibilityAllowed;
        case Step::enrol:
            return facts.enrolmentComplete;
        case Step::name:
            return !trimmed(facts.name).empty();
        case Step::password:
            return facts.passwordSaved;
        case Step::consent:
            return facts.consentSaved;
        case Step::welcome:
        case Step::triggers:
        case Step::done:
            return true;
    }
    return false;
}

bool UnlockOnboardingFlow::goForward(const UnlockOnboardingFacts& facts) {
    if (isFinished_ || !canGoForward(facts)) return false;
    const auto next = std::ranges::find_if(steps(), [this](Step step) { return step > step_; });
    if (next == steps().end()) {
        isFinished_ = true;
    } else {
        step_ = *next;
        forward_ = true;
    }
    return true;
}

bool UnlockOnboardingFlow::canGoBack() const {
    if (step_ == steps().front() || step_ == Step::welcome) return false;
    return mode_ != UnlockOnboardingMode::setUp || (step_ != Step::triggers && step_ != Step::done);
}

void UnlockOnboardingFlow::goBack() {
    if (isFinished_ || !canGoBack()) return;
    const auto backwards = steps() | std::views::reverse;
    const auto previous =
        std::ranges::find_if(backwards, [this](Step step) { return step < step_; });
    if (previous == backwards.end()) return;
    step_ = *previous;
    forward_ = false;
}

bool UnlockOnboardingFlow::permissionChanged(const UnlockOnboardingFacts& facts) {
    if (step_ != Step::camera && step_ != Step::accessibility) return false;
    return goForward(facts);
}

}  // namespace marrowby
