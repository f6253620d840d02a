// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"

#include <condition_variable>
#include <cstdint>

namespace marrowby {

/// Stops typings on another thread, and waits for the last. Shared by both threads; any thread.
class TypingsUnderWay {
  public:
    /// One typing; void once stop() or end() was called after it was given.
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

        /// False: what the typing would use may be gone.
        [[nodiscard]] bool isTaken() const { return isTaken_; }

      private:
        TypingsUnderWay& typings_;
        const bool isTaken_;
    };

    /// Voids all orders given.
    void stop() EXCLUDES(mutex_);
    /// Stops, and waits for those under way. The last call.
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
