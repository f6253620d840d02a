// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Delivers a connection's events on Qt's event loop. Create and destroy it on that thread;
/// handlers may destroy it. It must be the connection's only reader.
class XcbEventPump {
  public:
    struct Handlers {
        std::function<void(const xcb_generic_event_t&)> onEvent;
        /// Called after all pending events were delivered; may wait for replies.
        std::function<void()> onCaughtUp;
        /// Called once, as the last call, when the display is lost.
        std::function<void()> onLost;
    };

    XcbEventPump(std::shared_ptr<const XcbConnection> connection, Handlers handlers);
    ~XcbEventPump();
    XcbEventPump(const XcbEventPump&) = delete;
    XcbEventPump& operator=(const XcbEventPump&) = delete;

  private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace marrowby
