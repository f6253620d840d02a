// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Hostile/Ground/GuardedTyping.h"
#include "Tests/Hostile/Ground/WorkingDesktop.h"

#include <array>
#include <cstddef>
#include <expected>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Results of typing the right password repeatedly.
struct HonestTally {
    int typed = 0;
    int accepted = 0;
    std::size_t leakedCharacters = 0;
    std::vector<double> milliseconds;

    [[nodiscard]] double medianMilliseconds() const;
};

/// Types a non-ASCII password into one kind of locker on one layout. Main thread.
class HonestSeries {
  public:
    /// State of the locker's field before typing.
    enum class Field { empty, withLeftover, awake };

    /// The error is a sentence; the desktop outlives this.
    [[nodiscard]] static std::expected<HonestSeries, std::string> create(WorkingDesktop& desktop,
                                                                         ScreenLocker::Kind kind,
                                                                         const std::string& layout);

    /// One more round. The error says why nothing was typed.
    [[nodiscard]] std::expected<void, std::string> type(Field field);

    [[nodiscard]] const std::array<HonestTally, 3>& tallies() const { return tallies_; }

  private:
    HonestSeries(WorkingDesktop& desktop, ScreenLocker::Kind kind);
    /// Taps a key until the locker shows its field; false if it never does.
    [[nodiscard]] bool wake() const;

    WorkingDesktop* desktop_;
    ScreenLocker::Kind kind_;
    std::unique_ptr<ScreenLocker> locker_;
    std::unique_ptr<XTestKeyEvents> keyEvents_;
    std::array<HonestTally, 3> tallies_;
};

}  // namespace marrowby
