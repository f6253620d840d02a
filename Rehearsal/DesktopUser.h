#pragma once

#include "Platforms/Linux/XTestKeyEvents.h"
#include "UnlockCore/Foundation/Geometry.h"

#include <QImage>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>

namespace marrowby {

class XcbConnection;

/// Somebody at a private desktop: looks at its screen, moves the pointer, presses keys. One thread.
class DesktopUser {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<DesktopUser, std::string> create(
        const std::string& displayName);
    DesktopUser(DesktopUser&&) noexcept;
    ~DesktopUser();

    /// What is on the screen; null on a lost display.
    [[nodiscard]] QImage screen() const;
    /// In pixels from the upper left corner.
    void pointAt(const Point& place) const;
    /// False when the display takes no keys.
    bool tap(std::uint32_t keysym);

  private:
    DesktopUser(std::unique_ptr<XcbConnection> connection, const std::string& displayName);

    std::unique_ptr<XcbConnection> connection_;
    std::unique_ptr<XTestKeyEvents> keys_;
};

}  // namespace marrowby
