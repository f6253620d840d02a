// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Recognition/FaceIdentity.h"
#include "UnlockCore/Storage/StorageError.h"

#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <vector>

namespace marrowby::faceidentitycoding {

/// A JSON array of the identities: keys are the field names, dates seconds since 2001-01-01, ids
/// upper-case; an absent pose, quality or set of models has no key. Refuses what decode() would.
[[nodiscard]] std::expected<std::string, FaceIdentityCodingError> encode(
    std::span<const FaceIdentity> identities);

/// Ignores unknown keys; refuses missing ones, wrong types and absurd sizes. Floats come back bit
/// for bit.
[[nodiscard]] std::expected<std::vector<FaceIdentity>, FaceIdentityCodingError> decode(
    std::span<const std::uint8_t> json);

}  // namespace marrowby::faceidentitycoding
