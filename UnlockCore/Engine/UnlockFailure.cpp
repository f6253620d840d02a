// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockFailure.h"

namespace marrowby {

namespace {

struct Title {
    using Text = std::string_view;
    Text operator()(const UnlockFailure::CameraUnavailable&) { return "Camera unavailable"; }
    Text operator()(const UnlockFailure::TypingFailed&) { return "Couldn’t type"; }
    Text operator()(const UnlockFailure::NotRecognised&) { return "Not recognised"; }
    Text operator()(const UnlockFailure::NotLive&) { return "Not recognised"; }
    Text operator()(const UnlockFailure::PasswordRejected&) { return "Password not accepted"; }
    Text operator()(const UnlockFailure::NeedsAccessibility&) { return "Needs permission"; }
    Text operator()(const UnlockFailure::FaceCutOff&) { return "Move back a little"; }
    Text operator()(const UnlockFailure::NotOpened&) { return "Couldn’t unlock"; }
};

}  // namespace

std::string_view title(const UnlockFailure& failure) {
    return std::visit(Title(), failure);
}

}  // namespace marrowby
