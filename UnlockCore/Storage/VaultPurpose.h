#pragma once

#include <string_view>

namespace marrowby {

/// What a sealed blob is for. Bound into the blob, so that one kind never opens as the other.
enum class VaultPurpose { faces, password };

[[nodiscard]] std::string_view rawValue(VaultPurpose purpose);

}  // namespace marrowby
