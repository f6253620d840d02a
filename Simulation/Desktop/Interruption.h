// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>

#include <signal.h>

namespace marrowby {

/// Catches SIGINT, SIGTERM, SIGHUP and SIGPIPE, so that the program can end in order. One at a
/// time.
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    [[nodiscard]] bool hasCome() const;

  private:
    static constexpr std::array signals{SIGINT, SIGTERM, SIGHUP, SIGPIPE};

    std::array<struct sigaction, signals.size()> former_{};
};

}  // namespace marrowby
