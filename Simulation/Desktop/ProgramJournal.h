// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <QSocketNotifier>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Receives what a program writes to journald and reports each entry. Main thread, under Qt’s event
/// loop.
class ProgramJournal {
  public:
    struct Entry {
        std::string message;
        /// One of logevent, and what it is about; empty where the entry names none.
        std::string event;
        std::string subject;
    };

    /// Makes the socket, which must not exist. The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<ProgramJournal>, std::string> create(
        const std::filesystem::path& socket, std::function<void(const Entry&)> onEntry);

  private:
    ProgramJournal(OwnedFile socket, std::function<void(const Entry&)> onEntry);
    void read();

    OwnedFile socket_;
    std::function<void(const Entry&)> onEntry_;
    QSocketNotifier notifier_;
};

}  // namespace marrowby
