#include "Rehearsal/People/Person.h"

#include <array>
#include <numeric>

namespace marrowby {

std::span<const std::uint64_t> distinctPeople() {
    static const auto seeds = [] {
        std::array<std::uint64_t, 200> all{};
        std::iota(all.begin(), all.end(), 1U);
        return all;
    }();
    return seeds;
}

}  // namespace marrowby
