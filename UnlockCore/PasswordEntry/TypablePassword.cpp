#include "UnlockCore/PasswordEntry/TypablePassword.h"

#include <algorithm>

namespace marrowby {

std::optional<std::string_view> typablepassword::objection(std::span<const std::uint8_t> password) {
    const bool hasControl = std::ranges::any_of(
        password, [](std::uint8_t byte) { return byte < 0x20 || byte == 0x7F; });
    if (!hasControl) return std::nullopt;
    return "The password has a line break or another control character in it, which can’t be typed "
           "at the lock screen.";
}

}  // namespace marrowby
