#pragma once

#include "Platforms/Linux/Input/KeyboardLayout.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace marrowby {

/// Keys through a keyboard of our own in the kernel, for Wayland and the console, where the user
/// may write its device (/dev/uinput). It types in the layout it is told and doesn't know what the
/// user holds. Any thread.
class UinputKeyEvents final : public KeyEvents {
  public:
    /// A keyboard that takes one event of the kernel's kind; false when it is gone.
    class Keyboard {
      public:
        virtual ~Keyboard() = default;
        [[nodiscard]] virtual bool send(std::uint16_t type, std::uint16_t code,
                                        std::int32_t value) = 0;
    };
    using Plug = std::function<std::shared_ptr<Keyboard>()>;
    using Pause = std::function<void(TimeInterval)>;
    /// Whether a key is for the lock screen now: asked before each one that is pressed. Any thread.
    using Guard = std::function<bool()>;

    /// Makes the keyboard in the kernel; nothing where that is not allowed.
    [[nodiscard]] static std::shared_ptr<Keyboard> plugIn();

    UinputKeyEvents(const KeyboardLayout::Names& layout, Guard guard, Pause pause,
                    Plug plug = plugIn);

    /// Plugs the keyboard in, so that whoever reads it knows it before the first key.
    [[nodiscard]] bool isTrusted() const override;
    [[nodiscard]] KeyDialect dialect() const override { return KeyDialect::x11Locker; }
    /// Nothing for a character that the layout has no key for.
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const std::uint32_t> codes) override;
    void pause(TimeInterval duration) override { pause_(duration); }

  private:
    const std::shared_ptr<const KeyboardLayout> layout_;
    const Guard guard_;
    const Pause pause_;
    const Plug plug_;
    mutable Mutex mutex_;
    mutable std::shared_ptr<Keyboard> keyboard_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
