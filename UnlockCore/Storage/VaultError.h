#pragma once

#include "UnlockCore/Platform/PlatformWords.h"

#include <string>

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

/// The sentence for the user.
[[nodiscard]] std::string description(VaultError error, const PlatformWords& words);

}  // namespace marrowby
