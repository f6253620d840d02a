// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace marrowby {

/// The application's place in the desktop's tray, where there is one. Main thread.
class StatusItem {
  public:
    enum class Command : std::uint8_t { settings, pause, resume, quit };

    struct Content {
        /// One line.
        std::string status;
        /// Offers to resume instead of to pause.
        bool isPaused = false;
        friend bool operator==(const Content&, const Content&) = default;
    };

    virtual ~StatusItem() = default;

    /// The user chose an entry of its menu.
    std::function<void(Command)> onCommand;

    virtual void show(const Content& content) = 0;
};

}  // namespace marrowby
