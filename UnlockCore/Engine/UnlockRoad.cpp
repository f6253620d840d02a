// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/UnlockRoad.h"

#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace marrowby {

namespace {

constexpr std::array<std::string_view, 7> names{"camera-asked", "first-picture", "first-face",
                                                "first-match",  "confirmed",     "first-key",
                                                "typed"};

}  // namespace

void UnlockRoad::reach(Step step, Date at) {
    auto& reached = reached_.at(static_cast<std::size_t>(step));
    if (!reached) reached = at;
}

LogLine UnlockRoad::line() const {
    static_assert(names.size() == stepCount);
    std::string steps;
    for (std::size_t i = 0; i < stepCount; ++i) {
        const auto reached = reached_.at(i);
        if (!reached) continue;
        const auto milliseconds = std::llround((*reached - begin_).count() * 1000);
        if (!steps.empty()) steps += ' ';
        steps.append(names[i]).append("=").append(std::to_string(milliseconds));
    }
    return {.level = LogLine::Level::debug,
            .event = logevent::road,
            .sentence = Phrase("Milliseconds since the return: {detail}"),
            .detail = std::move(steps)};
}

}  // namespace marrowby
