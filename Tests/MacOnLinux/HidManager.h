#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace marrowby {

/// Keyboards, and the managers that listen to them.
struct FakeKeyboards {
    bool isGranted = true;
    /// Times that the user was asked for it.
    int requests = 0;
    /// By keyboard: another program keeps it for itself.
    std::vector<bool> areSeized{false};
    /// Of opening the managers, where it is no success.
    std::int32_t openFailure = 0;
    /// What managers looked for: “page 1 usage 6”.
    std::vector<std::string> searches;
    /// Managers that went while they were open, scheduled or had a callback.
    int leftInUse = 0;

    /// A key of that keyboard goes down or up; `length` in bytes.
    static void send(std::size_t keyboard, std::uint32_t usage, bool down, long length = 4);
};

/// One for all; a test assigns a new one.
FakeKeyboards& fakeKeyboards();

}  // namespace marrowby
