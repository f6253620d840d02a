#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <string_view>

namespace marrowby {

/// What the rehearsal says while it runs: headings, and lines with the seconds since it began. Main
/// thread.
class Transcript {
  public:
    explicit Transcript(const SystemClock& clock) : clock_(clock), begin_(clock.now()) {}

    void heading(std::string_view text);
    /// A line of the scene: what happens to the computer or in front of it.
    void scene(std::string_view text);
    /// A log line of the engine, as it comes.
    void engine(std::string_view text);

  private:
    void line(std::string_view source, std::string_view text);

    const SystemClock& clock_;
    Date begin_;
};

}  // namespace marrowby
