#pragma once

#include <string_view>

namespace marrowby {

/// What a strict look may ask of the person in front of the camera: a small turn of the head.
enum class LivenessPrompt { turnHead };

[[nodiscard]] constexpr std::string_view rawValue(LivenessPrompt prompt) {
    switch (prompt) {
        case LivenessPrompt::turnHead:
            return "turnHead";
    }
    return {};
}

}  // namespace marrowby
