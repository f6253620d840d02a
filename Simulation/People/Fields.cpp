// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/Fields.h"

#include <array>
#include <cstddef>

namespace marrowby::fields {

namespace {

/// The noise repeats after so many cells.
constexpr std::uint32_t cellsAcross = 32;

std::uint32_t scrambled(std::uint32_t h) {
    h ^= h >> 15U;
    h *= 0x2c1b3c6dU;
    h ^= h >> 12U;
    h *= 0x297a2d39U;
    return h ^ (h >> 15U);
}

/// Values of 0…1 at the corners of a lattice, the first of every row and layer repeated at its end.
struct Lattice {
    static constexpr std::size_t row = cellsAcross + 1;
    static constexpr std::size_t layer = row * row;

    Lattice() {
        std::size_t i = 0;
        for (std::uint32_t z = 0; z <= cellsAcross; ++z) {
            for (std::uint32_t y = 0; y <= cellsAcross; ++y) {
                for (std::uint32_t x = 0; x <= cellsAcross; ++x) {
                    const std::uint32_t cell =
                        (z % cellsAcross * cellsAcross + y % cellsAcross) * cellsAcross +
                        x % cellsAcross;
                    values[i++] = static_cast<float>(scrambled(cell + 1) >> 8U) * 0x1p-24F;
                }
            }
        }
    }

    std::array<float, layer * row> values{};
};

}  // namespace

float noise(const Vector3& p, std::uint32_t seed) {
    static const Lattice lattice;
    const std::uint32_t offset = scrambled(seed + 0x9e3779b9U);
    // Truncation rounds down where nothing is negative.
    constexpr float positive = 4096;
    const float px = p.x + positive;
    const float py = p.y + positive;
    const float pz = p.z + positive;
    const auto x = static_cast<int>(px);
    const auto y = static_cast<int>(py);
    const auto z = static_cast<int>(pz);
    const auto eased = [](float t) { return t * t * (3 - 2 * t); };
    const float tx = eased(px - static_cast<float>(x));
    const float ty = eased(py - static_cast<float>(y));
    const float tz = eased(pz - static_cast<float>(z));
    const auto wrapped = [](int i, std::uint32_t shift) {
        return std::size_t{(static_cast<std::uint32_t>(i) + shift) % cellsAcross};
    };
    const float* v = &lattice.values[wrapped(z, offset >> 10U) * Lattice::layer +
                                     wrapped(y, offset >> 5U) * Lattice::row + wrapped(x, offset)];
    const auto along = [&](std::size_t i) { return v[i] + (v[i + 1] - v[i]) * tx; };
    const float near = along(0) + (along(Lattice::row) - along(0)) * ty;
    const float low = along(Lattice::layer);
    const float deep = low + (along(Lattice::layer + Lattice::row) - low) * ty;
    return near + (deep - near) * tz;
}

}  // namespace marrowby::fields
