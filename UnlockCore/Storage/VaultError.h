#pragma once

#include <string_view>

namespace marrowby {

/// Why the vault can't give, make or use its key.
enum class VaultError {
    locked,
    keyMissingButDataExists,
    badKey,
    sealFailed,
    openFailed,
    unknownFormat,
};

/// The fixed sentence for the user.
[[nodiscard]] std::string_view description(VaultError error);

}  // namespace marrowby
