#pragma once

#include <cstddef>
#include <cstdint>
#include <random>

namespace marrowby {

/// Numbers from a seed. The same on every system: of the library only the engine is used, whose
/// numbers the standard fixes.
class Dice {
  public:
    explicit Dice(std::uint64_t seed) : engine_(seed) {}

    float uniform(float least, float most) {
        // 24 bits, all that a float holds.
        return least + (most - least) * static_cast<float>(engine_() >> 40U) * 0x1p-24F;
    }
    /// Evenly up to three times `step` to either side.
    float around(float mean, float step) { return mean + 3 * step * uniform(-1, 1); }
    /// The same up to four times.
    float widely(float mean, float step) { return mean + 4 * step * uniform(-1, 1); }
    bool chance(float probability) { return uniform(0, 1) < probability; }
    /// 0 … count - 1.
    std::size_t pick(std::size_t count) { return engine_() % count; }

  private:
    std::mt19937_64 engine_;
};

}  // namespace marrowby
