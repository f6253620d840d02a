// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/HidSpaceKeys.h"
#include "Tests/Platforms/macOS/Rules/FakeKeyboardDevices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

TEST(HidSpaceKeys, hearsKeyDownsOfSpaceOnly) {
    FakeKeyboardDevices devices;
    HidSpaceKeys keys(devices);
    int presses = 0;
    const auto onPress = [&](SpaceKeys::Press) { ++presses; };
    devices.opens = false;
    EXPECT_FALSE(keys.listen(onPress));
    devices.opens = true;
    auto listening = keys.listen(onPress);
    ASSERT_TRUE(listening);
    EXPECT_THAT(devices.attempts,
                ElementsAre(KeyboardDevices::Match{1, 6}, KeyboardDevices::Match{1, 6}));
    for (const KeyboardDevices::InputValue& value : {
             KeyboardDevices::InputValue{7, 44, 1},
             KeyboardDevices::InputValue{7, 44, 1},  // held down
             KeyboardDevices::InputValue{7, 44, 0},
             KeyboardDevices::InputValue{7, 44, 2},
             KeyboardDevices::InputValue{7, 40, 1},
             KeyboardDevices::InputValue{12, 44, 1},
         }) {
        devices.send(value);
    }
    EXPECT_EQ(presses, 2);
    listening.reset();
    devices.send({7, 44, 1});
    EXPECT_EQ(presses, 2);
}

}  // namespace
}  // namespace marrowby
