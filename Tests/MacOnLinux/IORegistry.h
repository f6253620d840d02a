#pragma once

namespace marrowby {

/// The registry of devices, with the one entry that is asked for.
struct FakeRegistry {
    bool hasEntry = true;
    /// Entries given out that nobody released.
    int entriesHeld = 0;
};

/// One for all; a test assigns a new one.
FakeRegistry& fakeRegistry();

}  // namespace marrowby
