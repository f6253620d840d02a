// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

namespace unlockfailure {

struct CameraUnavailable {
    std::string message;
    friend bool operator==(const CameraUnavailable&, const CameraUnavailable&) = default;
};
struct TypingFailed {
    std::string message;
    friend bool operator==(const TypingFailed&, const TypingFailed&) = default;
};
struct NotRecognised {
    friend bool operator==(const NotRecognised&, const NotRecognised&) = default;
};
struct NotLive {
    friend bool operator==(const NotLive&, const NotLive&) = default;
};
/// The screen stayed locked after the password was typed.
struct PasswordRejected {
    friend bool operator==(const PasswordRejected&, const PasswordRejected&) = default;
};
struct NeedsAccessibility {
    friend bool operator==(const NeedsAccessibility&, const NeedsAccessibility&) = default;
};

/// Every face seen reached too far over the picture's edge.
struct FaceCutOff {
    friend bool operator==(const FaceCutOff&, const FaceCutOff&) = default;
};

/// The desktop was not asked to open the lock, or did not open it.
struct NotOpened {
    std::string message;
    friend bool operator==(const NotOpened&, const NotOpened&) = default;
};

}  // namespace unlockfailure

/// Why a scan, or the typing after it, failed. The messages are for the user.
struct UnlockFailure
    : std::variant<unlockfailure::CameraUnavailable, unlockfailure::TypingFailed,
                   unlockfailure::NotRecognised, unlockfailure::NotLive,
                   unlockfailure::PasswordRejected, unlockfailure::NeedsAccessibility,
                   unlockfailure::FaceCutOff, unlockfailure::NotOpened> {
    using CameraUnavailable = unlockfailure::CameraUnavailable;
    using TypingFailed = unlockfailure::TypingFailed;
    using NotRecognised = unlockfailure::NotRecognised;
    using NotLive = unlockfailure::NotLive;
    using PasswordRejected = unlockfailure::PasswordRejected;
    using NeedsAccessibility = unlockfailure::NeedsAccessibility;
    using FaceCutOff = unlockfailure::FaceCutOff;
    using NotOpened = unlockfailure::NotOpened;
    using variant::variant;
};

/// For the log and the island. A face that is not live reads like an unknown one: an
/// attacker is not told which check failed.
[[nodiscard]] Phrase title(const UnlockFailure& failure);

}  // namespace marrowby
