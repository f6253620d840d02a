// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/UUID.h"

#include <string>

namespace marrowby {

/// The identity that a frame matched, and how well (cosine similarity to its template).
struct MatchedFace {
    UUID id;
    std::string name;
    float similarity = 0;

    friend bool operator==(const MatchedFace&, const MatchedFace&) = default;
};

}  // namespace marrowby
