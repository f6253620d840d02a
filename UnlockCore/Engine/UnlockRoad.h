// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Foundation/Time.h"

#include <array>
#include <cstddef>
#include <optional>

namespace marrowby {

/// When one unlock took each step, for its log line. A value for one thread.
class UnlockRoad {
  public:
    /// In their order.
    enum class Step {
        /// The camera was told to start.
        cameraAsked,
        /// Analysed, as the following ones.
        firstPicture,
        firstFace,
        firstMatch,
        confirmed,
        firstKey,
        /// The password and Return were posted.
        typed
    };

    /// `begin`: when the event that started the scan came.
    explicit UnlockRoad(Date begin) : begin_(begin) {}

    /// Only the first time counts.
    void reach(Step step, Date at);
    /// The milliseconds from the beginning to each step that was reached, for the log only.
    [[nodiscard]] LogLine line() const;

  private:
    static constexpr std::size_t stepCount = static_cast<std::size_t>(Step::typed) + 1;

    Date begin_;
    std::array<std::optional<Date>, stepCount> reached_{};
};

}  // namespace marrowby
