#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The program’s windows as assistive technology sees and works them: over AT-SPI
/// (https://gitlab.gnome.org/GNOME/at-spi2-core/-/tree/main/xml). Main thread; each call asks the
/// program anew and blocks until it has answered.
class AccessibleWindows {
  public:
    /// `sessionBus`: its address. Connects with the first call.
    explicit AccessibleWindows(std::string sessionBus);
    ~AccessibleWindows();
    AccessibleWindows(const AccessibleWindows&) = delete;
    AccessibleWindows& operator=(const AccessibleWindows&) = delete;

    /// Of the window that is shown; nothing where none is.
    [[nodiscard]] std::optional<std::string> title() const;
    /// All that is written in it.
    [[nodiscard]] std::vector<std::string> texts() const;

    /// A button or switch of this name; false where none can be pressed.
    [[nodiscard]] bool press(std::string_view name) const;
    /// Gives the keyboard to the first text field; false as long as it hasn’t it.
    [[nodiscard]] bool focusText() const;
    /// Opens the list of the choice with this label; false as long as it isn’t open.
    [[nodiscard]] bool open(std::string_view label) const;

  private:
    class Bus;
    std::unique_ptr<Bus> bus_;
};

}  // namespace marrowby
