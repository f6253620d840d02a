// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/LivenessMode.h"

#include <algorithm>

namespace marrowby {

namespace {

bool equalsIgnoringCase(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

}  // namespace

LivenessMode livenessMode(std::optional<std::string_view> stored) {
    if (stored && (equalsIgnoringCase(*stored, "strict") || equalsIgnoringCase(*stored, "heavy"))) {
        return LivenessMode::strict;
    }
    return LivenessMode::standard;
}

std::string_view rawValue(LivenessMode mode) {
    switch (mode) {
        case LivenessMode::standard:
            return "standard";
        case LivenessMode::strict:
            return "strict";
    }
    return {};
}

Phrase title(LivenessMode mode) {
    switch (mode) {
        case LivenessMode::standard:
            return Phrase("Standard");
        case LivenessMode::strict:
            return Phrase("Strict");
    }
    return {};
}

std::string settingsNote(LivenessMode mode, const PlatformWords& words) {
    switch (mode) {
        case LivenessMode::standard:
            return {};
        case LivenessMode::strict:
            return translated("Also asks for a small turn of the head, {island}.",
                              {{"island", words.island}});
    }
    return {};
}

}  // namespace marrowby
