#pragma once

namespace marrowby {

/// Listens for presses of the Space key. Main thread. Starting twice and stopping twice are
/// harmless.
class SpaceKeyListening {
  public:
    virtual ~SpaceKeyListening() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

}  // namespace marrowby
