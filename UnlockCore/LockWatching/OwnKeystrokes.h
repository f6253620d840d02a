#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/InputIdle.h"

#include <limits>
#include <optional>

namespace marrowby {

/// When this process posted keys last, so that its own typing is not taken for the user. Any
/// thread. Times are system uptimes; their source outlives it.
class OwnKeystrokes {
  public:
    /// Keys posted without a pause for the user between them; endless while they are being posted.
    struct Burst {
        TimeInterval begin{};
        TimeInterval end{std::numeric_limits<double>::infinity()};
    };

    /// Keys are being posted while it exists. One at a time.
    class Posting {
      public:
        explicit Posting(OwnKeystrokes& own) : own_(own) { own_.begin(); }
        ~Posting() { own_.end(); }
        Posting(const Posting&) = delete;
        Posting& operator=(const Posting&) = delete;

      private:
        OwnKeystrokes& own_;
    };

    explicit OwnKeystrokes(const InputIdle& uptimes) : uptimes_(uptimes) {}

    /// The burst that input of this moment belongs to.
    [[nodiscard]] std::optional<Burst> burst(TimeInterval inputUptime) const;
    /// Whether a synthetic key that arrives now can be one of ours.
    [[nodiscard]] bool mayArriveNow() const;

  private:
    void begin();
    void end();

    const InputIdle& uptimes_;
    mutable Mutex mutex_;
    std::optional<Burst> last_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
