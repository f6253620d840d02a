#include "UnlockCore/LockWatching/WindowServerLockState.h"

#include "UnlockCore/LockWatching/UnlockLockState.h"

namespace marrowby {

bool WindowServerLockState::isLocked() const {
    return UnlockLockState::isLocked(session_.copyCurrentDictionary());
}

}  // namespace marrowby
