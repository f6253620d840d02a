// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Geometry.h"

#include <QImage>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>

namespace marrowby {

class XcbConnection;

/// A user at a private desktop: sees its screen, moves the pointer, presses keys. One thread.
class DesktopUser {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<DesktopUser, std::string> create(
        const std::string& displayName);
    DesktopUser(DesktopUser&&) noexcept;
    ~DesktopUser();

    /// What is on the screen; null on a lost display.
    [[nodiscard]] QImage screen() const;
    /// The window that the window manager calls active, without its frame; null where none is.
    [[nodiscard]] QImage activeWindow() const;
    /// In pixels from the upper left corner.
    void pointAt(const Point& place) const;
    /// Presses a real key, whichever window has the keyboard. False when the display takes none or
    /// has none for that keysym.
    bool press(std::uint32_t keysym, bool down) const;
    bool tap(std::uint32_t keysym) const { return press(keysym, true) && press(keysym, false); }
    /// ASCII, with Shift where it needs it. False when the layout has no key for a character.
    bool write(std::string_view text) const;

  private:
    explicit DesktopUser(std::unique_ptr<XcbConnection> connection);

    std::unique_ptr<XcbConnection> connection_;
};

}  // namespace marrowby
