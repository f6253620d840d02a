// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>

namespace marrowby {

template <typename Application>
class QtLoopOf {
  public:
    QtLoopOf() = default;
    QtLoopOf(const QtLoopOf&) = delete;
    QtLoopOf& operator=(const QtLoopOf&) = delete;
    ~QtLoopOf() {
        // DeferredDelete events are only processed by exec().
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// False when the condition is still false after 60 s.
    [[nodiscard]] bool runUntil(const std::function<bool()>& condition) {
        const QDeadlineTimer deadline(std::chrono::seconds(60));
        // Wakes the loop for conditions without an event.
        QTimer waker;
        waker.start(5);
        while (!condition()) {
            if (deadline.hasExpired()) return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

    void runPending() { QCoreApplication::processEvents(); }

  private:
    int argumentCount_ = 1;
    char name_[5] = "test";
    char* arguments_[2] = {name_, nullptr};
    Application application_{argumentCount_, arguments_};
};

using QtLoop = QtLoopOf<QCoreApplication>;

}  // namespace marrowby
