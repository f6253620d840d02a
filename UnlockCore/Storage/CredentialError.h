#pragma once

#include <string_view>

namespace marrowby {

/// Why there is no password to save or to use.
enum class CredentialError { empty, none };

/// The fixed sentence for the user.
[[nodiscard]] std::string_view description(CredentialError error);

}  // namespace marrowby
