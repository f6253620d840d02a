#pragma once

#include "UnlockCore/Platform/KeyEvents.h"

namespace marrowby {

/// Events posted at the HID event tap. The system drops them without a word where it does not let
/// this process post, or where it is sandboxed. An event holds its text in memory of the system's
/// own until it is delivered. Making one can fail, and nothing throws. Nothing is borrowed from the
/// keyboard, so there is nothing to settle. Who else types is not told; that the login window has
/// the keyboard is, as far as public calls go.
class CoreGraphicsKeyEvents final : public KeyEvents {
  public:
    /// Accessibility, as the user switched it on.
    [[nodiscard]] bool isTrusted() const override;
    /// The system's own answer about posting, which may differ from the former until the
    /// application is started anew.
    [[nodiscard]] bool mayPost() const override;
    [[nodiscard]] KeyDialect dialect() const override { return KeyDialect::macLoginWindow; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const std::uint32_t> codes) override;
    void pause(TimeInterval duration) override;
};

}  // namespace marrowby
