// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/ChildProcess.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace marrowby {

/// A virtual X server for one test, and its input devices.
class PrivateDisplay {
  public:
    /// Null when Xvfb is missing or does not start.
    [[nodiscard]] static std::unique_ptr<PrivateDisplay> start();
    PrivateDisplay(const PrivateDisplay&) = delete;
    PrivateDisplay& operator=(const PrivateDisplay&) = delete;
    ~PrivateDisplay() { kill(); }

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] const XcbConnection& connection() const { return *connection_; }

    /// Kills the server, as in a crash.
    void kill() { server_.reset(); }
    /// Starts another server under the same name; false on failure.
    [[nodiscard]] bool startAgain() { return startServer(); }

    void tap(std::uint32_t keysym) const;
    void movePointer() const;
    /// Blanks the monitors as after idle time; input unblanks them.
    void blank() const;
    /// Maps a key code to another symbol.
    void mapKey(std::uint8_t keycode, std::uint32_t keysym) const;
    void setRootProperty(const char* name, std::uint32_t value) const;

  private:
    PrivateDisplay() = default;
    /// Under this display's name, or where it has none, one that the server finds.
    [[nodiscard]] bool startServer();

    std::optional<ChildProcess> server_;
    std::string name_;
    std::unique_ptr<XcbConnection> connection_;
};

inline constexpr const char* noPrivateDisplay = "Skipped: needs Xvfb.";

/// A window as a locker creates it. Unmapped at first; destroyed with this object.
class LockerWindow {
  public:
    enum class Management { overridden, byWindowManager };

    LockerWindow(const PrivateDisplay& display, std::string_view className,
                 Management management = Management::overridden);
    LockerWindow(const LockerWindow&) = delete;
    LockerWindow& operator=(const LockerWindow&) = delete;
    ~LockerWindow();

    void map() const;
    void unmap() const;
    void resize(std::uint32_t width, std::uint32_t height) const;

  private:
    const XcbConnection& connection_;
    xcb_window_t window_;
};

}  // namespace marrowby
