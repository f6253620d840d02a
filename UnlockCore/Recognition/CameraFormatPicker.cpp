// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Recognition/CameraFormatPicker.h"

namespace marrowby::cameraformatpicker {

namespace {

// As a double: a device may claim dimensions whose product overflows.
double area(const Candidate& candidate) {
    return static_cast<double>(candidate.width) * static_cast<double>(candidate.height);
}

}  // namespace

std::optional<std::size_t> pick(std::span<const Candidate> candidates, std::int64_t maxHeight,
                                double frameRate) {
    if (candidates.empty()) return std::nullopt;

    std::optional<std::size_t> largestFast;
    std::optional<std::size_t> smallestFast;
    std::optional<std::size_t> largestSlow;
    const auto take = [&](std::optional<std::size_t>& best, std::size_t index, bool wantsLarger) {
        const double mine = area(candidates[index]);
        const double other = best ? area(candidates[*best]) : 0;
        if (!best || (wantsLarger ? mine > other : mine < other)) best = index;
    };
    for (std::size_t index = 0; index < candidates.size(); ++index) {
        const bool isFast = candidates[index].maxFrameRate >= frameRate - 0.01;
        const bool fits = candidates[index].height <= maxHeight;
        if (isFast) take(smallestFast, index, false);
        if (fits) take(isFast ? largestFast : largestSlow, index, true);
    }
    if (largestFast) return largestFast;
    if (smallestFast) return smallestFast;
    return largestSlow.value_or(0);
}

}  // namespace marrowby::cameraformatpicker
