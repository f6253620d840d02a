#pragma once

#include "UnlockCore/Foundation/Time.h"

#include <optional>
#include <vector>

namespace marrowby {

/// How fast a look's pictures come, by their own stamps: the middle of the newest intervals, so
/// that neither a lost picture nor two in quick succession change it. A faster pace is believed
/// after two intervals, because it asks for more pictures, a slower one after four. A value.
class FramePace {
  public:
    /// Pictures a second that the camera is asked for, and what it is taken to give until some
    /// came.
    static constexpr double presumed = 30;

    /// The stamp of the next picture. One before the last tells nothing of the pace.
    void note(Date stamp);

    [[nodiscard]] double framesPerSecond() const;
    /// Whether the time since `last` is far less than a picture takes: the picture belongs to a
    /// burst, or to another pace that is not known yet.
    [[nodiscard]] bool isBurst(Date last, Date stamp) const;

  private:
    /// Seconds, the newest last.
    std::vector<double> intervals_;
    std::optional<Date> newest_;
};

}  // namespace marrowby
