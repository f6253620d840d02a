// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// Random numbers that are the same for the same seed on every machine: SplitMix64
/// (https://prng.di.unimi.it/splitmix64.c).
class Chance {
  public:
    explicit Chance(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        state_ += 0x9e3779b97f4a7c15U;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30U)) * 0xbf58476d1ce4e5b9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94d049bb133111ebU;
        return mixed ^ (mixed >> 31U);
    }
    double between(double low, double high) {
        return low + (high - low) * (static_cast<double>(next() >> 11U) * 0x1p-53);
    }

  private:
    std::uint64_t state_;
};

inline float between(Chance& chance, double low, double high) {
    return static_cast<float>(chance.between(low, high));
}

}  // namespace marrowby
