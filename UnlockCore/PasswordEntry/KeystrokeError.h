#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <string>

namespace marrowby {

/// Why the password was not typed, or not to its end.
enum class KeystrokeError { noAccessibility, notLocked, invalidText, eventFailed, noLocker };

/// The sentence for the user.
[[nodiscard]] std::string description(KeystrokeError error, const PlatformWords& words);

}  // namespace marrowby
