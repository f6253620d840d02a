// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/KeyCodes.h"
#include "UnlockCore/PasswordEntry/KeystrokePlan.h"

#include <cmath>
#include <cstdint>
#include <tuple>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(KeyCodes, clearAndEnterTheLoginWindowsField) {
    using Event = std::tuple<std::uint16_t, bool, std::uint64_t>;
    constexpr std::uint64_t command = 0x100000;
    const auto plan =
        KeystrokePlan::make(u"secret", FieldClearing::toTheEndThenBack, loginWindowPace);
    std::vector<Event> events;
    std::vector<long> pauses;
    for (const auto& action : plan.actions) {
        if (const auto* post = std::get_if<KeystrokeAction::Post>(&action))
            events.emplace_back(mackey::code(post->press.key), post->press.down,
                                mackey::flags(post->press));
        if (const auto* pause = std::get_if<KeystrokeAction::Pause>(&action))
            pauses.push_back(std::lround(pause->duration.count() * 1000));
    }
    EXPECT_EQ(events, (std::vector<Event>{{55, true, command},
                                          {124, true, command},
                                          {124, false, command},
                                          {55, false, 0},
                                          {55, true, command},
                                          {51, true, command},
                                          {51, false, command},
                                          {55, false, 0},
                                          {36, true, 0},
                                          {36, false, 0}}));
    EXPECT_EQ(pauses, (std::vector<long>{12, 12, 12, 12, 12, 12, 12, 12, 4, 4, 12, 12}));
}

}  // namespace
}  // namespace marrowby
