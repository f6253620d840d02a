// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Foundation/SecretBytes.h"

namespace marrowby {

Phrase description(SecretMemoryError error) {
    switch (error) {
        case SecretMemoryError::outOfMemory:
            return Phrase("There’s no memory left to hold a secret.");
        case SecretMemoryError::pageLockRefused:
            return Phrase("The system won’t keep a secret out of swap, so it wasn’t read.");
    }
    return {};
}

}  // namespace marrowby
