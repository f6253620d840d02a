// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QVariant>
#include <cstdint>
#include <optional>

namespace marrowby {

/// The user in a property of type (uo); nothing in one of another type.
[[nodiscard]] std::optional<std::uint32_t> userOfPair(const QVariant& value);

}  // namespace marrowby
