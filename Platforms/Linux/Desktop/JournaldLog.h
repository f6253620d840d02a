#pragma once

#include <string>

namespace marrowby {

/// Lines for the system’s journal; where none runs they go to the standard error. Any thread.
class JournaldLog {
  public:
    static constexpr const char* systemSocket = "/run/systemd/journal/socket";

    explicit JournaldLog(std::string identifier, std::string socket = systemSocket)
        : identifier_(std::move(identifier)), socket_(std::move(socket)) {}

    /// Never blocks: a journal that is behind is written past.
    void write(std::string line) const;

  private:
    const std::string identifier_;
    const std::string socket_;
};

}  // namespace marrowby
