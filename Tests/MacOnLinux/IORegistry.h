// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace marrowby {

/// A fake registry with the one entry that is looked up.
struct FakeRegistry {
    bool hasEntry = true;
    /// Entries returned and not released.
    int entriesHeld = 0;
};

/// A singleton; tests assign a new value.
FakeRegistry& fakeRegistry();

}  // namespace marrowby
