// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/MatchStrictness.h"

namespace marrowby {

std::optional<MatchStrictness> matchStrictness(std::string_view text) {
    for (const MatchStrictness strictness : allMatchStrictnesses) {
        if (rawValue(strictness) == text) return strictness;
    }
    return std::nullopt;
}

std::string_view rawValue(MatchStrictness strictness) {
    switch (strictness) {
        case MatchStrictness::relaxed:
            return "relaxed";
        case MatchStrictness::standard:
            return "standard";
        case MatchStrictness::strict:
            return "strict";
    }
    return {};
}

Phrase displayName(MatchStrictness strictness) {
    switch (strictness) {
        case MatchStrictness::relaxed:
            return Phrase("Relaxed");
        case MatchStrictness::standard:
            return Phrase("Standard");
        case MatchStrictness::strict:
            return Phrase("Strict");
    }
    return {};
}

float threshold(MatchStrictness strictness) {
    switch (strictness) {
        case MatchStrictness::relaxed:
            return 0.45F;
        case MatchStrictness::standard:
            return 0.50F;
        case MatchStrictness::strict:
            return 0.58F;
    }
    return 0.58F;
}

}  // namespace marrowby
