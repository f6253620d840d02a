// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

namespace marrowby {

/// Writes entries of one line to the systemd journal, or to standard error where there is none. Any
/// thread.
class JournaldLog {
  public:
    static constexpr const char* systemSocket = "/run/systemd/journal/socket";

    explicit JournaldLog(std::string identifier, std::string socket = systemSocket)
        : identifier_(std::move(identifier)), socket_(std::move(socket)) {}

    struct Entry {
        std::string message;
        /// For programs that read the journal, as MARROWBY_EVENT and MARROWBY_SUBJECT; left out
        /// where they are empty.
        std::string event{};
        std::string subject{};
        /// Lower priority; only in the journal.
        bool isDebugging = false;
    };

    /// Never waits for the journal: an entry that it does not take goes to standard error.
    void write(const Entry& entry) const;
    void write(std::string message) const { write(Entry{.message = std::move(message)}); }

  private:
    const std::string identifier_;
    const std::string socket_;
};

}  // namespace marrowby
