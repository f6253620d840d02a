#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace marrowby {

/// What the system and other processes tell this one by signals. Made before any other thread;
/// whatever comes until start() waits. Main thread; one at a time.
class ProcessSignals {
  public:
    /// Asks a running instance to open its window again.
    static const int reopenSignal;

    ProcessSignals();
    ~ProcessSignals();
    ProcessSignals(const ProcessSignals&) = delete;
    ProcessSignals& operator=(const ProcessSignals&) = delete;

    /// Under Qt’s event loop. `onTerminate` comes once; whoever asks again ends the process.
    void start(std::function<void()> onTerminate, std::function<void()> onReopen);

  private:
    void read();

    int descriptor_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void()> onTerminate_;
    std::function<void()> onReopen_;
};

}  // namespace marrowby
