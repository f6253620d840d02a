#pragma once

namespace marrowby {

/// Watches for input of any kind. Main thread. Starting twice and stopping twice are harmless.
class ActivityWatching {
  public:
    virtual ~ActivityWatching() = default;
    virtual void start() = 0;
    virtual void stop() = 0;
};

}  // namespace marrowby
