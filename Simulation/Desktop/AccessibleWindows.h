// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The program’s windows through AT-SPI
/// (https://gitlab.gnome.org/GNOME/at-spi2-core/-/tree/main/xml), as assistive technology uses
/// them. Main thread; each call asks the program and blocks for the answer.
class AccessibleWindows {
  public:
    /// `sessionBus`: its address. Connects with the first call.
    explicit AccessibleWindows(const std::string& sessionBus);
    ~AccessibleWindows();
    AccessibleWindows(const AccessibleWindows&) = delete;
    AccessibleWindows& operator=(const AccessibleWindows&) = delete;

    /// The shown window's; nothing where none is shown.
    [[nodiscard]] std::optional<std::string> title() const;
    /// All its texts.
    [[nodiscard]] std::vector<std::string> texts() const;
    /// The roles of its controls that a screen reader has no name for.
    [[nodiscard]] std::vector<std::string> unnamedControls() const;
    /// Whether the switch of this name is on; nothing where no control of this name can be pressed.
    [[nodiscard]] std::optional<bool> isOn(std::string_view name) const;

    /// Presses the button or switch of this name; false where none can be pressed.
    [[nodiscard]] bool press(std::string_view name) const;
    /// Focuses the first text field; false until it has the focus.
    [[nodiscard]] bool focusText() const;
    /// Opens the list of the choice with this label; false until it is open.
    [[nodiscard]] bool open(std::string_view label) const;

  private:
    class Bus;
    std::unique_ptr<Bus> bus_;
};

}  // namespace marrowby
