// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockFailure.h"

namespace marrowby {

namespace {

struct Title {
    using Text = Phrase;
    Text operator()(const UnlockFailure::CameraUnavailable&) {
        return Phrase("Camera unavailable");
    }
    Text operator()(const UnlockFailure::TypingFailed&) { return Phrase("Couldn’t type"); }
    Text operator()(const UnlockFailure::NotRecognised&) { return Phrase("Not recognised"); }
    Text operator()(const UnlockFailure::NotLive&) { return Phrase("Not recognised"); }
    Text operator()(const UnlockFailure::PasswordRejected&) {
        return Phrase("Password not accepted");
    }
    Text operator()(const UnlockFailure::NeedsAccessibility&) { return Phrase("Needs permission"); }
    Text operator()(const UnlockFailure::FaceCutOff&) { return Phrase("Move back a little"); }
    Text operator()(const UnlockFailure::NotOpened&) { return Phrase("Couldn’t unlock"); }
};

}  // namespace

Phrase title(const UnlockFailure& failure) {
    return std::visit(Title(), failure);
}

}  // namespace marrowby
