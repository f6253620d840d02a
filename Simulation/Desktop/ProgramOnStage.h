// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <QSocketNotifier>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

/// The program marrowby-unlock-on-stage, running: commands and answers are lines, as
/// StagePlatformFactory defines them. Destroying it ends it. Main thread, under Qt’s event loop.
class ProgramOnStage {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<ProgramOnStage>, std::string> start(
        const std::filesystem::path& program, std::vector<std::string> arguments,
        std::vector<std::string> environment, std::function<void(const std::string& line)> onLine);

    /// False when the program takes no more commands.
    [[nodiscard]] bool order(const std::string& line) const;
    [[nodiscard]] bool isRunning() const { return process_.isRunning(); }
    [[nodiscard]] const ChildProcess& process() const { return process_; }

  private:
    ProgramOnStage(ChildProcess process, OwnedFile orders, OwnedFile answers,
                   std::function<void(const std::string& line)> onLine);
    void read();

    OwnedFile orders_;
    OwnedFile answers_;
    std::function<void(const std::string& line)> onLine_;
    std::string unread_;
    QSocketNotifier notifier_;
    ChildProcess process_;
};

}  // namespace marrowby
