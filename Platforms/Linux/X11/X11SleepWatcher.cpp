// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11SleepWatcher.h"

#include "Platforms/Linux/X11/XcbConnection.h"
#include "Platforms/Linux/X11/XcbEventPump.h"

#include <cstdint>
#include <optional>
#include <utility>

#include <xcb/screensaver.h>

namespace marrowby {

struct X11SleepWatcher::Watch {
    std::shared_ptr<const XcbConnection> connection;
    std::function<void()> onChange;
    std::uint8_t notifyEvent = 0;
    bool isAsleep = false;
    bool wasAsleep = false;
    std::optional<XcbEventPump> pump;

    /// Selects the events; false when the display has none.
    [[nodiscard]] bool select() {
        const xcb_query_extension_reply_t* extension =
            xcb_get_extension_data(connection->get(), &xcb_screensaver_id);
        if (extension == nullptr || extension->present == 0) return false;
        notifyEvent = static_cast<std::uint8_t>(extension->first_event + XCB_SCREENSAVER_NOTIFY);
        xcb_screensaver_select_input(connection->get(), connection->root(),
                                     XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
        // Read after selecting events, so that no change is missed.
        const auto info = connection->reply<xcb_screensaver_query_info_reply>(
            xcb_screensaver_query_info(connection->get(), connection->root()));
        if (!info) return false;
        wasAsleep = isAsleep = info->state == XCB_SCREENSAVER_STATE_ON;
        return true;
    }

    void note(const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) != notifyEvent) return;
        const auto state = reinterpret_cast<const xcb_screensaver_notify_event_t&>(event).state;
        isAsleep = state == XCB_SCREENSAVER_STATE_ON || state == XCB_SCREENSAVER_STATE_CYCLE;
    }

    void tell() {
        if (std::exchange(wasAsleep, isAsleep) == isAsleep) return;
        // Copy: the callback may destroy this object.
        const auto report = onChange;
        report();
    }
};

std::unique_ptr<X11SleepWatcher> X11SleepWatcher::create(const std::string& displayName,
                                                         std::function<void()> onChange) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return nullptr;
    auto watch = std::make_unique<Watch>();
    watch->connection = std::move(*connection);
    watch->onChange = std::move(onChange);
    if (!watch->select()) return nullptr;
    watch->pump.emplace(
        watch->connection,
        XcbEventPump::Handlers{
            .onEvent = [watch = watch.get()](const auto& event) { watch->note(event); },
            .onCaughtUp = [watch = watch.get()] { watch->tell(); },
            .onLost = [] {}});
    return std::unique_ptr<X11SleepWatcher>(new X11SleepWatcher(std::move(watch)));
}

X11SleepWatcher::X11SleepWatcher(std::unique_ptr<Watch> watch) : watch_(std::move(watch)) {}

X11SleepWatcher::~X11SleepWatcher() = default;

bool X11SleepWatcher::isAsleep() const {
    return watch_->isAsleep;
}

}  // namespace marrowby
