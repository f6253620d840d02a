#pragma once

#include <string>

namespace marrowby {

/// Writes lines to the systemd journal, or to standard error where there is none. Any thread.
class JournaldLog {
  public:
    static constexpr const char* systemSocket = "/run/systemd/journal/socket";

    explicit JournaldLog(std::string identifier, std::string socket = systemSocket)
        : identifier_(std::move(identifier)), socket_(std::move(socket)) {}

    /// Never waits for the journal: a line that it does not take goes to standard error.
    void write(std::string line) const;

  private:
    const std::string identifier_;
    const std::string socket_;
};

}  // namespace marrowby
