#pragma once

#include <string_view>

namespace marrowby {

/// Why the password was not typed, or not to its end.
enum class KeystrokeError { noAccessibility, notLocked, invalidText, eventFailed, noLocker };

/// The fixed sentence for the user.
[[nodiscard]] std::string_view description(KeystrokeError error);

}  // namespace marrowby
