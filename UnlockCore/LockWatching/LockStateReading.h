#pragma once

namespace marrowby {

/// Answers whether the screen is locked at this moment. Any thread.
class LockStateReading {
  public:
    virtual ~LockStateReading() = default;
    [[nodiscard]] virtual bool isLocked() const = 0;
};

}  // namespace marrowby
