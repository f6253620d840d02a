// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/KeyEvents.h"

namespace marrowby {

/// Posts events at the HID event tap. The system silently drops them when this process may not post
/// or is sandboxed. An event keeps its text in system memory until delivery. Creating one can fail;
/// nothing throws. Keys are not remapped, so nothing needs settling. Other typists cannot be
/// detected; whether the login window has the keyboard can, as far as public calls tell.
class CoreGraphicsKeyEvents final : public KeyEvents {
  public:
    /// The Accessibility permission.
    [[nodiscard]] bool isTrusted() const override;
    /// The system's answer about posting; may differ from isTrusted() until the application
    /// restarts.
    [[nodiscard]] bool mayPost() const override;
    [[nodiscard]] FieldClearing clearing() const override {
        return FieldClearing::toTheEndThenBack;
    }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) override;
    void pause(TimeInterval duration) override;
};

}  // namespace marrowby
