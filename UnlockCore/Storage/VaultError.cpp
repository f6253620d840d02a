#include "UnlockCore/Storage/VaultError.h"

namespace marrowby {

std::string description(VaultError error, const PlatformWords& words) {
    switch (error) {
        case VaultError::locked:
            return "Marrowby Unlock needs your " + std::string(words.ownerCheck.yours) + " first.";
        case VaultError::keyMissingButDataExists:
            return "The key for your saved face and password is missing, but they’re still saved. "
                   "Nothing was deleted. Remove them in Settings to start again.";
        case VaultError::badKey:
            return "The saved key isn’t a key Marrowby Unlock made.";
        case VaultError::sealFailed:
            return "Couldn’t encrypt.";
        case VaultError::openFailed:
            return "Couldn’t decrypt: the saved data may be damaged.";
        case VaultError::unknownFormat:
            return "The saved data is in a format this version doesn’t know.";
    }
    return {};
}

}  // namespace marrowby
