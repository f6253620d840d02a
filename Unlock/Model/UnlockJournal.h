// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstddef>
#include <deque>
#include <string>

namespace marrowby {

/// The engine's last log lines as they are shown, in memory only and without names. Main thread.
class UnlockJournal {
  public:
    static constexpr std::size_t capacity = 200;

    struct Entry {
        Date at;
        std::string text;
    };

    /// Forgets the oldest beyond the capacity.
    void add(const LogLine& line, Date now);
    /// Oldest first.
    [[nodiscard]] const std::deque<Entry>& entries() const { return entries_; }

  private:
    std::deque<Entry> entries_;
};

}  // namespace marrowby
