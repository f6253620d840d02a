#pragma once

namespace marrowby {

/// What happened to the screen lock, or to the sleep of the displays.
enum class LockEvent { screenLocked, screenUnlocked, willSleep, wake };

}  // namespace marrowby
