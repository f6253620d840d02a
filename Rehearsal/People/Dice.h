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
    /// Near a normal distribution (a sum of four uniform ones), never further than 3.4 deviations.
    float around(float mean, float deviation) {
        float sum = 0;
        for (int i = 0; i < 4; ++i)
            sum += uniform(-1, 1);
        return mean + deviation * sum * 0.866F;
    }
    bool chance(float probability) { return uniform(0, 1) < probability; }
    /// 0 … count - 1.
    std::size_t pick(std::size_t count) { return engine_() % count; }

  private:
    std::mt19937_64 engine_;
};

}  // namespace marrowby
