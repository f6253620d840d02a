// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <cstddef>
#include <expected>
#include <string>
#include <vector>

namespace marrowby {

/// A user's program that pretends to be a locker (hostile-impostor) and counts the keys it gets.
/// Destroying it kills it. One thread.
class Impostor {
  public:
    /// Blocks until it has done all that `command` asks for, unless `isReadyAtOnce` is false.
    Impostor(const std::string& displayName, std::vector<std::string> command,
             bool isReadyAtOnce = true);
    ~Impostor() { end(); }
    Impostor(const Impostor&) = delete;
    Impostor& operator=(const Impostor&) = delete;
    [[nodiscard]] bool hasBegun() const { return hasBegun_; }
    /// Number of received keys that give a character. Ends the program.
    [[nodiscard]] std::size_t characters();

  private:
    void end();
    [[nodiscard]] bool read(int milliseconds);

    Pipe keys_;
    std::expected<ChildProcess, std::string> program_;
    std::string received_;
    bool hasBegun_ = false;
};

}  // namespace marrowby
