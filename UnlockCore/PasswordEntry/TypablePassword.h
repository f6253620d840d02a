#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace marrowby::typablepassword {

/// The sentence for the user why this password (UTF-8) can't be typed at a lock screen; nothing
/// where it can.
[[nodiscard]] std::optional<std::string_view> objection(std::span<const std::uint8_t> password);

}  // namespace marrowby::typablepassword
