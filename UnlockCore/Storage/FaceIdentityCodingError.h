#pragma once

#include <string>

namespace marrowby {

/// Why text is not a list of enrolled faces, or a list can't be written as text.
struct FaceIdentityCodingError {
    std::string reason;
    friend bool operator==(const FaceIdentityCodingError&,
                           const FaceIdentityCodingError&) = default;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const FaceIdentityCodingError& error);

}  // namespace marrowby
