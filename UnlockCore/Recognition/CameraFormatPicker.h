// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace marrowby {

namespace cameraformatpicker {

struct Candidate {
    /// Pixels.
    std::int64_t width = 0;
    std::int64_t height = 0;
    /// Frames per second.
    double maxFrameRate = 0;

    friend bool operator==(const Candidate&, const Candidate&) = default;
};

/// The position of the largest candidate that is fast enough and not higher than `maxHeight`;
/// failing that the smallest fast one, the largest slow one that fits, the first. Nothing without
/// candidates.
[[nodiscard]] std::optional<std::size_t> pick(std::span<const Candidate> candidates,
                                              std::int64_t maxHeight, double frameRate);

}  // namespace cameraformatpicker

}  // namespace marrowby
