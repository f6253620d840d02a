// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <expected>
#include <string>
#include <utility>

namespace marrowby {

/// The size of a private screen in points, and how many pixels a point has.
struct PrivateScreen {
    int width = 1024;
    int height = 640;
    int scale = 1;
};

/// An X server of its own without a monitor, in true colour, as the current user. It and its files
/// are removed when this is destroyed, and when the creating thread ends. One thread.
class PrivateDesktop {
  public:
    /// Blocks until the server answers, at most ten seconds. The error is a sentence for the user.
    [[nodiscard]] static std::expected<PrivateDesktop, std::string> create(
        const PrivateScreen& screen = {});

    /// For DISPLAY, as in ":5".
    [[nodiscard]] const std::string& displayName() const { return displayName_; }

  private:
    PrivateDesktop(ChildProcess server, std::string displayName)
        : server_(std::move(server)), displayName_(std::move(displayName)) {}

    ChildProcess server_;
    std::string displayName_;
};

}  // namespace marrowby
