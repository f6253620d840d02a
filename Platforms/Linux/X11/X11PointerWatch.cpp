// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11PointerWatch.h"

#include "Platforms/Linux/X11/X11Screen.h"
#include "Platforms/Linux/X11/XRawKeys.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Platforms/Linux/X11/XcbEventPump.h"

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <optional>
#include <utility>

#include <xcb/xinput.h>

namespace marrowby {
namespace {

bool selectRawMotion(const XcbConnection& connection) {
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{
        .head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
        .mask = XCB_INPUT_XI_EVENT_MASK_RAW_MOTION,
    };
    const XcbConnection::Owned<xcb_generic_error_t> error(xcb_request_check(
        connection.get(), xcb_input_xi_select_events_checked(connection.get(), connection.root(), 1,
                                                             &selection.head)));
    return !error && !connection.hasError();
}

}  // namespace

struct X11PointerWatch::Watch {
    std::shared_ptr<const XcbConnection> connection;
    std::function<void(const Point&)> onPlace;
    double scale = 1;
    std::optional<XcbEventPump> pump;
    /// Context of the first call, which is dropped when this is destroyed.
    QObject first;

    void tell() const {
        const auto pointer = connection->reply<xcb_query_pointer_reply>(
            xcb_query_pointer(connection->get(), connection->root()));
        if (!pointer) return;
        // Copy: the callback may end the watch.
        const auto report = onPlace;
        report({.x = pointer->root_x / scale, .y = pointer->root_y / scale});
    }
};

std::unique_ptr<X11PointerWatch> X11PointerWatch::create(
    const std::string& displayName, std::function<void(const Point&)> onPlace) {
    auto connection = XcbConnection::create(displayName);
    if (!connection || !XRawKeys::areOffered(**connection) || !selectRawMotion(**connection))
        return nullptr;
    const auto screen = X11Screen::main(**connection);
    if (!screen) return nullptr;
    auto watch = std::make_unique<Watch>();
    watch->connection = std::move(*connection);
    watch->onPlace = std::move(onPlace);
    watch->scale = screen->scale;
    // One query for any number of queued motion events.
    watch->pump.emplace(
        watch->connection,
        XcbEventPump::Handlers{.onEvent = [](const auto&) {},
                               .onCaughtUp = [watch = watch.get()] { watch->tell(); },
                               .onLost = [] {}});
    QTimer::singleShot(0, &watch->first, [watch = watch.get()] { watch->tell(); });
    return std::unique_ptr<X11PointerWatch>(new X11PointerWatch(std::move(watch)));
}

X11PointerWatch::X11PointerWatch(std::unique_ptr<Watch> watch) : watch_(std::move(watch)) {}

X11PointerWatch::~X11PointerWatch() = default;

}  // namespace marrowby
