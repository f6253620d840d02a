// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/PrivateFolder.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// Key codes that are the same on every layout.
namespace keycode {
inline constexpr std::uint8_t escape = 9;
inline constexpr std::uint8_t tab = 23;
inline constexpr std::uint8_t returnKey = 36;
inline constexpr std::uint8_t leftControl = 37;
inline constexpr std::uint8_t letterA = 38;
inline constexpr std::uint8_t leftShift = 50;
inline constexpr std::uint8_t leftAlt = 64;
inline constexpr std::uint8_t f12 = 96;
inline constexpr std::uint8_t rightShift = 62;
}  // namespace keycode

/// A private desktop in use: a window manager and a focused terminal that reports every byte its
/// program receives. One thread.
class WorkingDesktop {
  public:
    /// Blocks until the terminal has the focus. F12 makes it grab the keyboard. The error is a
    /// sentence.
    [[nodiscard]] static std::expected<WorkingDesktop, std::string> create();

    [[nodiscard]] const std::string& displayName() const { return server_.displayName(); }
    [[nodiscard]] const XcbConnection& connection() const { return *connection_; }

    /// Presses and releases a key, as a user would.
    void tap(std::uint8_t keycode) const;
    void press(std::uint8_t keycode, bool down) const;
    /// Where no window is.
    void clickOnTheDesktop(std::uint8_t button) const;

    /// Waits until a program has taken the keyboard from the terminal.
    [[nodiscard]] bool awaitGrab() const;
    /// Waits until any program, the terminal included, has grabbed the keyboard. It probes with a
    /// grab of its own, so it may delay others.
    [[nodiscard]] bool awaitHeldKeyboard(
        std::chrono::seconds patience = std::chrono::seconds(20)) const;

    /// Bytes that the terminal received since the last call, after all keys sent before. The error
    /// says that it receives none.
    [[nodiscard]] std::expected<std::string, std::string> terminalBytes();

    /// The whole keymap and the keys held down; constant while nobody types.
    [[nodiscard]] std::vector<std::uint32_t> keyboard() const;

  private:
    WorkingDesktop(PrivateDesktop server, std::unique_ptr<XcbConnection> connection,
                   PrivateFolder folder)
        : server_(std::move(server)),
          connection_(std::move(connection)),
          folder_(std::move(folder)) {}
    [[nodiscard]] std::expected<void, std::string> startPrograms();
    [[nodiscard]] bool isTerminalManaged() const;
    [[nodiscard]] bool readTerminal(int milliseconds);
    void fake(std::uint8_t type, std::uint8_t detail) const;

    PrivateDesktop server_;
    std::unique_ptr<XcbConnection> connection_;
    PrivateFolder folder_;
    OwnedFile output_;
    std::vector<ChildProcess> programs_;
    xcb_window_t terminal_ = XCB_NONE;
    std::string unread_;
    std::size_t reads_ = 0;
};

}  // namespace marrowby
