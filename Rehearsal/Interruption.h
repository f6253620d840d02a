#pragma once

#include <signal.h>

namespace marrowby {

/// Notes SIGINT and SIGTERM instead of dying of them, so that what runs can end in order. One at a
/// time.
class Interruption {
  public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    [[nodiscard]] bool hasCome() const;

  private:
    struct sigaction formerInterrupt_{};
    struct sigaction formerTerminate_{};
};

}  // namespace marrowby
