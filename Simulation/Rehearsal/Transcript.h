// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <string_view>

namespace marrowby {

/// The rehearsal's output: headings, and lines with the seconds since its start. Main thread.
class Transcript {
  public:
    explicit Transcript(const SystemClock& clock) : clock_(clock), begin_(clock.now()) {}

    void heading(std::string_view text);
    /// An event at the computer or in front of it.
    void scene(std::string_view text);
    /// A log line of the engine.
    void engine(std::string_view text);

  private:
    void line(std::string_view source, std::string_view text);

    const SystemClock& clock_;
    Date begin_;
};

}  // namespace marrowby
