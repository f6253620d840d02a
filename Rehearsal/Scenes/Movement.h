#pragma once

#include "Rehearsal/Scenes/Placement.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstdint>
#include <vector>

namespace marrowby {

/// How something moves: from place to place along smooth ways, swaying all the while. A value.
class Movement {
  public:
    explicit Movement(const Placement& start) : keys_{{.at = {}, .place = start}} {}

    Movement& stay(TimeInterval time);
    /// Starts and arrives gently.
    Movement& moveTo(const Placement& place, TimeInterval time);
    /// On top of all else, `reach` to either side and back in every `period`.
    Movement& sway(const Placement& reach, TimeInterval period);
    /// What a hand or a head does that is held still: a few millimetres and hundredths of a radian
    /// times `amount`.
    Movement& tremble(std::uint64_t seed, float amount = 1);

    /// Before its start it is at the start, after its end at the end.
    [[nodiscard]] Placement at(TimeInterval time) const;

  private:
    struct Key {
        TimeInterval at{};
        Placement place = {};
    };
    struct Wave {
        Placement reach = {};
        TimeInterval period{};
        double phase = 0;
    };

    std::vector<Key> keys_;
    std::vector<Wave> waves_;
};

}  // namespace marrowby
