#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <expected>
#include <string>
#include <utility>

namespace marrowby {

/// An X server of its own without a screen (1024 x 640, true colour), as the current user. It and
/// its files are removed when this is destroyed, and when the creating thread ends. One thread.
class PrivateDesktop {
  public:
    /// Blocks until the server answers, at most ten seconds. The error is a sentence for the user.
    [[nodiscard]] static std::expected<PrivateDesktop, std::string> create();

    /// For DISPLAY, as in ":5".
    [[nodiscard]] const std::string& displayName() const { return displayName_; }

  private:
    PrivateDesktop(ChildProcess server, std::string displayName)
        : server_(std::move(server)), displayName_(std::move(displayName)) {}

    ChildProcess server_;
    std::string displayName_;
};

}  // namespace marrowby
