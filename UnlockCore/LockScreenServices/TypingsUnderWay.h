#pragma once

#include "UnlockCore/Foundation/Mutex.h"

#include <condition_variable>
#include <cstdint>

namespace marrowby {

/// Lets whoever orders typings on another thread stop them, and go only once the last has ended.
/// Shared by both; any thread.
class TypingsUnderWay {
  public:
    /// An order for one typing: void once anything was stopped after it was given.
    using Order = std::uint64_t;

    [[nodiscard]] Order order() const EXCLUDES(mutex_);
    [[nodiscard]] bool stands(Order order) const EXCLUDES(mutex_);

    /// While it exists, end() waits.
    class Turn {
      public:
        Turn(TypingsUnderWay& typings, Order order)
            : typings_(typings), isTaken_(typings.begin(order)) {}
        ~Turn() {
            if (isTaken_) typings_.finish();
        }
        Turn(const Turn&) = delete;
        Turn& operator=(const Turn&) = delete;

        /// Where it is not, what the typing was to use may be gone.
        [[nodiscard]] bool isTaken() const { return isTaken_; }

      private:
        TypingsUnderWay& typings_;
        const bool isTaken_;
    };

    /// Makes all orders void that were given.
    void stop() EXCLUDES(mutex_);
    /// Stops, and waits for those under way. Nobody orders after this.
    void end() EXCLUDES(mutex_);

  private:
    [[nodiscard]] bool begin(Order order) EXCLUDES(mutex_);
    void finish() EXCLUDES(mutex_);

    mutable Mutex mutex_;
    std::condition_variable_any finished_;
    Order next_ GUARDED_BY(mutex_) = 0;
    int running_ GUARDED_BY(mutex_) = 0;
};

}  // namespace marrowby
