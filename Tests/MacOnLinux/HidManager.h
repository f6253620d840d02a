// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowby {

/// Fake keyboards and the HID managers that listen to them.
struct FakeKeyboards {
    bool isGranted = true;
    /// Number of permission prompts.
    int requests = 0;
    /// Per keyboard: another program has seized it.
    std::vector<bool> areSeized{false};
    /// Result of opening a manager, if not success.
    std::int32_t openFailure = 0;
    /// Matching dictionaries set: “page 1 usage 6”.
    std::vector<std::string> searches;
    /// Managers released while open, scheduled or with a callback.
    int leftInUse = 0;

    /// Presses or releases a key; `length` of the value in bytes.
    static void send(std::size_t keyboard, std::uint32_t usage, bool down, long length = 4);
};

/// A singleton; tests assign a new value.
FakeKeyboards& fakeKeyboards();

}  // namespace marrowby
