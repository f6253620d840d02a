#pragma once

#include "UnlockCore/Foundation/Time.h"

namespace marrowby {

/// Somebody touched the keyboard, the mouse or the trackpad.
struct InputActivity {
    Date at;
    /// How long there had been no input before this one.
    TimeInterval quietFor{};

    friend bool operator==(const InputActivity&, const InputActivity&) = default;
};

}  // namespace marrowby
