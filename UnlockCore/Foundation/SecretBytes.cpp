// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/SecretBytes.h"

namespace marrowby {

std::string_view description(SecretMemoryError error) {
    switch (error) {
        case SecretMemoryError::outOfMemory:
            return "There’s no memory left to hold a secret.";
        case SecretMemoryError::pageLockRefused:
            return "The system won’t keep a secret out of swap, so it wasn’t read.";
    }
    return {};
}

}  // namespace marrowby
