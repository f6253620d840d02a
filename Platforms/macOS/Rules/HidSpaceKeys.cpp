// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/HidSpaceKeys.h"

#include <cstdint>
#include <utility>

namespace marrowby {

namespace {

// USB HID Usage Tables 1.5: Generic Desktop page (0x01), Keyboard page (0x07).
constexpr KeyboardDevices::Match keyboards{.usagePage = 1, .usage = 6};
constexpr std::uint32_t keyPage = 7;
constexpr std::uint32_t spacebar = 44;
constexpr std::int64_t keyDown = 1;

class Opened final : public SpaceKeys::Listening {
  public:
    explicit Opened(std::unique_ptr<KeyboardDevices::Listening> listening)
        : listening_(std::move(listening)) {}

  private:
    std::unique_ptr<KeyboardDevices::Listening> listening_;
};

}  // namespace

std::unique_ptr<SpaceKeys::Listening> HidSpaceKeys::listen(std::function<void(Press)> onPress) {
    auto listening = devices_.open(
        keyboards, [onPress = std::move(onPress)](const KeyboardDevices::InputValue& value) {
            if (value.usagePage == keyPage && value.usage == spacebar && value.value == keyDown)
                onPress({});
        });
    if (!listening) return nullptr;
    return std::make_unique<Opened>(std::move(listening));
}

}  // namespace marrowby
