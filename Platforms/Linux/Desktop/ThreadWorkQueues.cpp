// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"

#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <algorithm>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <pthread.h>

namespace marrowby {
namespace {

/// Shared by a queue and its threads, which may outlive the queue.
class Worklist {
  public:
    enum class Reply { taken, needsThread };

    [[nodiscard]] Reply add(std::function<void()> work) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        pending_.push_back(std::move(work));
        changed_.notify_all();
        return pending_.size() > idle_ ? Reply::needsThread : Reply::taken;
    }

    void close() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        closed_ = true;
        changed_.notify_all();
    }

    /// Thread function: returns when the list is closed and empty.
    void drain() EXCLUDES(mutex_) {
        while (auto work = next()) {
            (*work)();
            // Release captured objects before the work counts as done.
            work.reset();
            finish();
        }
    }

    void waitUntilDone() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        while (!pending_.empty() || running_ > 0)
            changed_.wait(mutex_);
    }

  private:
    [[nodiscard]] std::optional<std::function<void()>> next() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        while (pending_.empty() && !closed_) {
            ++idle_;
            changed_.wait(mutex_);
            --idle_;
        }
        if (pending_.empty()) return std::nullopt;
        std::function<void()> work = std::move(pending_.front());
        pending_.pop_front();
        ++running_;
        return work;
    }

    void finish() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        --running_;
        changed_.notify_all();
    }

    Mutex mutex_;
    std::condition_variable_any changed_;
    std::deque<std::function<void()>> pending_ GUARDED_BY(mutex_);
    std::size_t idle_ GUARDED_BY(mutex_) = 0;
    std::size_t running_ GUARDED_BY(mutex_) = 0;
    bool closed_ GUARDED_BY(mutex_) = false;
};

constexpr std::size_t nameLength = 15;
// Typing and password checks mostly wait.
constexpr std::size_t backgroundThreads = 4;

}  // namespace

/// All started work, joined at the end.
class ThreadWorkQueues::Joiner {
  public:
    void add(const std::shared_ptr<Worklist>& list) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        std::erase_if(lists_, [](const auto& other) { return other.expired(); });
        lists_.push_back(list);
    }

    /// Takes the thread of a queue that was destroyed on that thread, which cannot join itself.
    void adopt(std::thread thread) EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        if (hasFinished_) {
            thread.detach();
        } else {
            orphans_.push_back(std::move(thread));
        }
    }

    void finish() EXCLUDES(mutex_) {
        for (const auto& weak : lists()) {
            if (const auto list = weak.lock()) list->waitUntilDone();
        }
        std::vector<std::thread> orphans;
        {
            const MutexLock lock(mutex_);
            hasFinished_ = true;
            orphans.swap(orphans_);
        }
        for (std::thread& orphan : orphans)
            orphan.join();
    }

  private:
    [[nodiscard]] std::vector<std::weak_ptr<Worklist>> lists() EXCLUDES(mutex_) {
        const MutexLock lock(mutex_);
        return lists_;
    }

    Mutex mutex_;
    bool hasFinished_ GUARDED_BY(mutex_) = false;
    std::vector<std::weak_ptr<Worklist>> lists_ GUARDED_BY(mutex_);
    std::vector<std::thread> orphans_ GUARDED_BY(mutex_);
};

class ThreadWorkQueues::Queue final : public WorkQueue {
  public:
    Queue(std::string label, std::size_t maximumThreads, std::shared_ptr<Joiner> joiner)
        : label_(std::move(label)), maximumThreads_(maximumThreads), joiner_(std::move(joiner)) {
        joiner_->add(worklist_);
    }
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    ~Queue() override {
        worklist_->close();
        // For the thread-safety analysis: no other reference exists.
        const MutexLock lock(mutex_);
        for (std::thread& thread : threads_) {
            if (thread.get_id() == std::this_thread::get_id()) {
                joiner_->adopt(std::move(thread));
            } else {
                thread.join();
            }
        }
    }

    void async(std::function<void()> work) override EXCLUDES(mutex_) {
        if (worklist_->add(std::move(work)) == Worklist::Reply::taken) return;
        const MutexLock lock(mutex_);
        if (threads_.size() < maximumThreads_) startThread();
    }

  private:
    void startThread() REQUIRES(mutex_) {
        try {
            threads_.emplace_back([list = worklist_] { list->drain(); });
        } catch (const std::system_error&) {
            fatal("the system has no thread to give");
        }
        // Linux limits thread names to 15 characters; the end tells queues apart best.
        const std::string name = label_.substr(label_.size() - std::min(label_.size(), nameLength));
        pthread_setname_np(threads_.back().native_handle(), name.c_str());
    }

    const std::string label_;
    const std::size_t maximumThreads_;
    const std::shared_ptr<Joiner> joiner_;
    const std::shared_ptr<Worklist> worklist_ = std::make_shared<Worklist>();
    Mutex mutex_;
    std::vector<std::thread> threads_ GUARDED_BY(mutex_);
};

ThreadWorkQueues::ThreadWorkQueues()
    : joiner_(std::make_shared<Joiner>()),
      background_(std::make_shared<Queue>("background", backgroundThreads, joiner_)) {}

ThreadWorkQueues::~ThreadWorkQueues() {
    background_.reset();
    joiner_->finish();
}

std::shared_ptr<WorkQueue> ThreadWorkQueues::serial(std::string label) {
    return std::make_shared<Queue>(std::move(label), 1, joiner_);
}

}  // namespace marrowby
