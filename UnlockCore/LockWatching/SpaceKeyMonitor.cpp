#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"

namespace marrowby {
namespace {

// USB HID Usage Tables 1.5: Generic Desktop page (0x01), Keyboard page (0x07).
constexpr KeyboardDevices::Match keyboards{.usagePage = 1, .usage = 6};
constexpr std::uint32_t keyPage = 7;
constexpr std::uint32_t spacebar = 44;
constexpr std::int64_t keyDown = 1;

}  // namespace

void SpaceKeyMonitor::start() {
    if (listening_) return;
    listening_ = devices_.open(keyboards,
                               [this](const KeyboardDevices::InputValue& value) { handle(value); });
}

void SpaceKeyMonitor::handle(const KeyboardDevices::InputValue& value) const {
    if (value.usagePage != keyPage || value.usage != spacebar || value.value != keyDown) return;
    if (value.isSynthetic && own_.mayArriveNow()) return;
    // A copy, for the owner may let go of this monitor in it.
    if (const auto report = onSpace) report();
}

}  // namespace marrowby
