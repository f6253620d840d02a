#pragma once

#include <string_view>

namespace marrowby {

/// What the room behind somebody is: mostly furniture beside the head, or straight edges behind and
/// across it, as far as possible at the places where those of a held-up device would be.
enum class Backdrop { furniture, curtain, window, door, shelf, picture, monitor, desk };

[[nodiscard]] std::string_view name(Backdrop backdrop);

}  // namespace marrowby
