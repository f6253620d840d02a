// SPDX-License-Identifier: Apache-2.0
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

/// Types through a uinput keyboard, for Wayland and the console; needs write access to /dev/uinput.
/// Types in the configured layout and cannot see which keys the user holds. Any thread.
class UinputKeyEvents final : public KeyEvents {
  public:
    /// A virtual keyboard that takes one input event; false when it is gone.
    class Keyboard {
      public:
        virtual ~Keyboard() = default;
        [[nodiscard]] virtual bool send(std::uint16_t type, std::uint16_t code,
                                        std::int32_t value) = 0;
    };
    using Plug = std::function<std::shared_ptr<Keyboard>()>;
    using Pause = std::function<void(TimeInterval)>;
    /// Whether keys reach the lock screen now; called before each press. Any thread.
    using Guard = std::function<bool()>;

    /// Creates the uinput device; null when that is not allowed.
    [[nodiscard]] static std::shared_ptr<Keyboard> plugIn();

    UinputKeyEvents(const KeyboardLayout::Names& layout, Guard guard, Pause pause,
                    Plug plug = plugIn);

    /// Creates the keyboard, so that readers have opened it before the first key.
    [[nodiscard]] bool isTrusted() const override;
    [[nodiscard]] FieldClearing clearing() const override { return FieldClearing::controlU; }
    /// Null for a character that the layout has no key for.
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) override;
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
