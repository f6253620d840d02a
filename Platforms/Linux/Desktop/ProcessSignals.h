// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace marrowby {

/// Receives termination and reopen signals. Create it before any other thread; signals that arrive
/// before start() stay pending. Main thread; one at a time.
class ProcessSignals {
  public:
    /// Sent to a running instance to open its window.
    static const int reopenSignal;

    ProcessSignals();
    ~ProcessSignals();
    ProcessSignals(const ProcessSignals&) = delete;
    ProcessSignals& operator=(const ProcessSignals&) = delete;

    /// Needs Qt's event loop. `onTerminate` is called once; a second termination signal ends the
    /// process.
    void start(std::function<void()> onTerminate, std::function<void()> onReopen);

  private:
    void read();

    int descriptor_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
    std::function<void()> onTerminate_;
    std::function<void()> onReopen_;
};

}  // namespace marrowby
