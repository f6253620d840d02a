// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/UinputKeyEvents.h"

#include "Platforms/Linux/Desktop/Keysyms.h"
#include "UnlockCore/Foundation/Text.h"
#include "UnlockCore/Platform/LockerTiming.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon.h>

namespace marrowby {
namespace {

using Chord = KeyboardLayout::Chord;

/// The name that users see among their input devices.
constexpr std::string_view deviceName = "Marrowby Unlock keyboard";

class KernelKeyboard final : public UinputKeyEvents::Keyboard {
  public:
    explicit KernelKeyboard(int descriptor) : descriptor_(descriptor) {}
    KernelKeyboard(const KernelKeyboard&) = delete;
    KernelKeyboard& operator=(const KernelKeyboard&) = delete;
    ~KernelKeyboard() override {
        (void)::ioctl(descriptor_, UI_DEV_DESTROY);
        ::close(descriptor_);
    }

    [[nodiscard]] bool create() const {
        uinput_setup setup{};
        setup.id.bustype = BUS_VIRTUAL;
        std::ranges::copy(deviceName, std::begin(setup.name));
        if (::ioctl(descriptor_, UI_SET_EVBIT, EV_KEY) != 0) return false;
        for (int key = KEY_ESC; key < KEY_MICMUTE; ++key) {
            if (::ioctl(descriptor_, UI_SET_KEYBIT, key) != 0) return false;
        }
        return ::ioctl(descriptor_, UI_DEV_SETUP, &setup) == 0 &&
               ::ioctl(descriptor_, UI_DEV_CREATE) == 0;
    }

    [[nodiscard]] bool send(std::uint16_t type, std::uint16_t code, std::int32_t value) override {
        input_event event{};
        event.type = type;
        event.code = code;
        event.value = value;
        return ::write(descriptor_, &event, sizeof event) == ssize_t{sizeof event};
    }

  private:
    int descriptor_;
};

class UinputSource final : public KeyEventSource {
  public:
    UinputSource(std::shared_ptr<UinputKeyEvents::Keyboard> keyboard,
                 std::shared_ptr<const KeyboardLayout> layout, UinputKeyEvents::Guard guard,
                 UinputKeyEvents::Pause pause)
        : keyboard_(std::move(keyboard)),
          layout_(std::move(layout)),
          guard_(std::move(guard)),
          pause_(std::move(pause)) {}

    [[nodiscard]] bool post(const KeyPress& press) override {
        const auto chord = layout_->chord(xkey::keysym(press.key));
        if (!chord || (press.down && !isUndisturbed())) return false;
        return send(chord->key, press.down);
    }

    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        if (!down) return true;
        while (!units.empty()) {
            const auto chord = layout_->chord(xkb_utf32_to_keysym(takeCharacter(units)));
            if (!chord || !isUndisturbed() || !tap(*chord)) return false;
        }
        return true;
    }

    /// Other readers of the device are unknowable. A refusal is final.
    [[nodiscard]] bool isUndisturbed() override {
        if (mayType_) mayType_ = guard_();
        return mayType_;
    }
    void settle(const std::function<bool()>& /*stillLocked*/) override {}

  private:
    /// Releases the modifiers even after a failure.
    [[nodiscard]] bool tap(const Chord& chord) const {
        const bool isHeld = (!chord.withShift || send(KEY_LEFTSHIFT, true)) &&
                            (!chord.withAltGr || send(KEY_RIGHTALT, true));
        const bool isTapped = isHeld && send(chord.key, true) && send(chord.key, false);
        const bool isAltGrLetGo = !chord.withAltGr || send(KEY_RIGHTALT, false);
        const bool isShiftLetGo = !chord.withShift || send(KEY_LEFTSHIFT, false);
        return isTapped && isAltGrLetGo && isShiftLetGo;
    }

    [[nodiscard]] bool send(std::uint16_t key, bool down) const {
        const bool isSent =
            keyboard_->send(EV_KEY, key, down ? 1 : 0) && keyboard_->send(EV_SYN, SYN_REPORT, 0);
        pause_(lockertiming::eventGap);
        return isSent;
    }

    const std::shared_ptr<UinputKeyEvents::Keyboard> keyboard_;
    const std::shared_ptr<const KeyboardLayout> layout_;
    const UinputKeyEvents::Guard guard_;
    const UinputKeyEvents::Pause pause_;
    bool mayType_ = true;
};

std::shared_ptr<const KeyboardLayout> load(const KeyboardLayout::Names& names) {
    auto layout = KeyboardLayout::create(names);
    if (!layout) return nullptr;
    return std::make_shared<const KeyboardLayout>(*std::move(layout));
}

}  // namespace

std::shared_ptr<UinputKeyEvents::Keyboard> UinputKeyEvents::plugIn() {
    const int descriptor = ::open("/dev/uinput", O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return nullptr;
    auto keyboard = std::make_shared<KernelKeyboard>(descriptor);
    if (!keyboard->create()) return nullptr;
    return keyboard;
}

UinputKeyEvents::UinputKeyEvents(const KeyboardLayout::Names& layout, Guard guard, Pause pause,
                                 Plug plug)
    : layout_(load(layout)),
      guard_(std::move(guard)),
      pause_(std::move(pause)),
      plug_(std::move(plug)) {}

bool UinputKeyEvents::isTrusted() const {
    if (!layout_) return false;
    const MutexLock lock(mutex_);
    if (!keyboard_) keyboard_ = plug_();
    return keyboard_ != nullptr;
}

std::unique_ptr<KeyEventSource> UinputKeyEvents::makeSource(std::span<const char16_t> text,
                                                            std::span<const EditingKey> keys) {
    if (!isTrusted()) return nullptr;
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (character < 0x20 || !layout_->chord(xkb_utf32_to_keysym(character))) return nullptr;
    }
    for (const auto key : keys) {
        if (!layout_->chord(xkey::keysym(key))) return nullptr;
    }
    const MutexLock lock(mutex_);
    return std::make_unique<UinputSource>(keyboard_, layout_, guard_, pause_);
}

}  // namespace marrowby
