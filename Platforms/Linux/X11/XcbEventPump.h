#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <functional>
#include <memory>

namespace marrowby {

/// Delivers a connection's events on Qt's event loop. Made and destroyed on that loop's thread; its
/// handlers may destroy it. Nobody else takes events from the connection.
class XcbEventPump {
  public:
    struct Handlers {
        std::function<void(const xcb_generic_event_t&)> onEvent;
        /// Called when all events at hand were delivered; may wait for replies.
        std::function<void()> onCaughtUp;
        /// Called once, last, when the display is gone.
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
