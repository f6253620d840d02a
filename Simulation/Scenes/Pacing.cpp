// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/Pacing.h"

#include "UnlockCore/Foundation/Mutex.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>
#include <utility>

namespace marrowby {

namespace {

class ThreadPacing final : public Pacing {
  public:
    explicit ThreadPacing(std::function<TimeInterval()> step)
        : step_(std::move(step)), thread_([this] { run(); }) {}
    ~ThreadPacing() override {
        {
            const MutexLock lock(mutex_);
            ends_ = true;
        }
        changed_.notify_all();
        thread_.join();
    }
    ThreadPacing(const ThreadPacing&) = delete;
    ThreadPacing& operator=(const ThreadPacing&) = delete;

  private:
    void run() {
        using Clock = std::chrono::steady_clock;
        auto due = Clock::now();
        while (!endsBefore(due)) {
            due += std::chrono::duration_cast<Clock::duration>(step_());
            due = std::max(due, Clock::now());
        }
    }

    bool endsBefore(std::chrono::steady_clock::time_point due) {
        const MutexLock lock(mutex_);
        while (!ends_) {
            if (changed_.wait_until(mutex_, due) == std::cv_status::timeout) return ends_;
        }
        return true;
    }

    std::function<TimeInterval()> step_;
    Mutex mutex_;
    std::condition_variable_any changed_;
    bool ends_ GUARDED_BY(mutex_) = false;
    // The last member: it uses the others.
    std::thread thread_;
};

}  // namespace

std::unique_ptr<Pacing> startThreadPacing(std::function<TimeInterval()> step) {
    return std::make_unique<ThreadPacing>(std::move(step));
}

}  // namespace marrowby
