#pragma once

#include "Simulation/Desktop/ChildProcess.h"

#include <QSocketNotifier>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Receives what a program writes to journald and reports each message. Main thread, under Qt’s
/// event loop.
class ProgramJournal {
  public:
    /// Makes the socket, which must not exist. The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<ProgramJournal>, std::string> create(
        const std::filesystem::path& socket, std::function<void(const std::string&)> onMessage);

  private:
    ProgramJournal(OwnedFile socket, std::function<void(const std::string&)> onMessage);
    void read();

    OwnedFile socket_;
    std::function<void(const std::string&)> onMessage_;
    QSocketNotifier notifier_;
};

}  // namespace marrowby
