// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ScreenLocker.h"
#include "Simulation/Scenes/Chance.h"
#include "Tests/Hostile/Ground/GuardedTyping.h"
#include "Tests/Hostile/Ground/WorkingDesktop.h"

#include <cstddef>
#include <expected>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// Results of killing a locker repeatedly during the typing.
struct KillTally {
    int kills = 0;
    /// Kills between the first key and the end of the typing.
    int whileTyping = 0;
    /// Kills that the typing noticed.
    int stopped = 0;
    int leaks = 0;
    std::size_t leakedCharacters = 0;
    /// Kills after which a key was still lent or held down.
    int changedKeyboards = 0;
};

/// Kills one kind of locker at random moments of the typing, on one desktop. Main thread.
class KillSeries {
  public:
    /// Types once undisturbed to measure when the keys are sent. The error is a sentence; the
    /// desktop outlives this.
    [[nodiscard]] static std::expected<KillSeries, std::string> create(WorkingDesktop& desktop,
                                                                       ScreenLocker::Kind kind,
                                                                       TimeInterval gap,
                                                                       std::uint64_t seed);

    /// One more kill. The error says why there was none.
    [[nodiscard]] std::expected<void, std::string> kill(int signal);

    [[nodiscard]] const KillTally& tally(int signal) { return tallies_[signal]; }

  private:
    struct Moment;
    struct Attempt;

    KillSeries(WorkingDesktop& desktop, ScreenLocker::Kind kind, TimeInterval gap,
               std::uint64_t seed);
    [[nodiscard]] Moment chooseMoment();
    [[nodiscard]] Attempt attempt(const Moment& moment, int signal);

    WorkingDesktop* desktop_;
    std::unique_ptr<ScreenLocker> locker_;
    std::unique_ptr<XTestKeyEvents> keyEvents_;
    Chance chance_;
    /// Times of the key presses, relative to the first.
    std::vector<TimeInterval> rhythm_;
    std::vector<std::uint32_t> keyboard_;
    std::map<int, KillTally> tallies_;
};

}  // namespace marrowby
