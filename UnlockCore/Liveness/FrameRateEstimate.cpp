// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/FrameRateEstimate.h"

#include <algorithm>
#include <cstddef>
#include <span>
#include <utility>

namespace marrowby {

namespace {

constexpr std::size_t mostIntervals = 7;
constexpr std::size_t fewIntervals = 3;
/// Frames per second; other timestamps are implausible.
constexpr double slowest = 1;
constexpr double fastest = 60;
/// Of a frame's duration.
constexpr double burst = 0.6;

double middle(std::span<const double> intervals) {
    std::vector<double> sorted(intervals.begin(), intervals.end());
    const auto at = sorted.begin() + static_cast<std::ptrdiff_t>((sorted.size() - 1) / 2);
    std::ranges::nth_element(sorted, at);
    return *at;
}

}  // namespace

void FrameRateEstimate::add(Date stamp) {
    const auto last = std::exchange(newest_, stamp);
    if (!last) return;
    const double interval = (stamp - *last).count();
    if (!(interval > 0 && interval <= 1 / slowest)) return;
    if (intervals_.size() == mostIntervals) intervals_.erase(intervals_.begin());
    intervals_.push_back(interval);
}

double FrameRateEstimate::framesPerSecond() const {
    if (intervals_.size() < fewIntervals) return assumed;
    const std::span all(intervals_);
    const double interval = std::min(middle(all), middle(all.last(fewIntervals)));
    return std::clamp(1 / interval, slowest, fastest);
}

bool FrameRateEstimate::isBurst(Date last, Date stamp) const {
    const double passed = (stamp - last).count();
    return passed >= 0 && passed < burst / framesPerSecond();
}

}  // namespace marrowby
