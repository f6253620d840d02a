// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XcbEventPump.h"

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <utility>

namespace marrowby {

struct XcbEventPump::State {
    std::shared_ptr<const XcbConnection> connection;
    Handlers handlers;
    QSocketNotifier* notifier = nullptr;
    bool isRunning = true;
    int callDepth = 0;

    /// The caller holds a reference, because handlers may destroy the pump. Loops until the queue
    /// is empty: handlers that wait for replies queue events for which the socket does not become
    /// readable again.
    void drain() {
        bool hasNews = true;
        while (isRunning && hasNews) {
            hasNews = false;
            while (isRunning) {
                const XcbConnection::Owned<xcb_generic_event_t> event(
                    xcb_poll_for_event(connection->get()));
                if (!event) break;
                hasNews = true;
                handlers.onEvent(*event);
            }
            if (isRunning && hasNews) handlers.onCaughtUp();
        }
        if (isRunning && connection->hasError()) {
            end();
            handlers.onLost();
        }
    }

    void end() {
        isRunning = false;
        notifier->setEnabled(false);
    }
};

XcbEventPump::XcbEventPump(std::shared_ptr<const XcbConnection> connection, Handlers handlers)
    : state_(std::make_shared<State>(
          State{.connection = std::move(connection), .handlers = std::move(handlers)})) {
    auto* notifier = new QSocketNotifier(state_->connection->fd(), QSocketNotifier::Read);
    state_->notifier = notifier;
    const auto drain = [weak = std::weak_ptr(state_)] {
        const auto state = weak.lock();
        if (!state) return;
        ++state->callDepth;
        state->drain();
        --state->callDepth;
    };
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, drain);
    // Events that arrived before the notifier.
    QTimer::singleShot(0, notifier, drain);
}

XcbEventPump::~XcbEventPump() {
    state_->end();
    if (state_->callDepth == 0) {
        delete state_->notifier;
    } else {
        // deleteLater: it may be the caller.
        state_->notifier->deleteLater();
    }
}

}  // namespace marrowby
