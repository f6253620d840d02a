// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11LockWatcher.h"

#include "Platforms/Linux/X11/X11LockerWindowReader.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Platforms/Linux/X11/XcbEventPump.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace marrowby {

class X11LockWatcher::Watch {
  public:
    Watch(std::shared_ptr<const XcbConnection> connection, std::function<void()> onChange,
          std::function<void(std::string)> onLost)
        : connection_(std::move(connection)),
          reader_(*connection_),
          onChange_(std::move(onChange)),
          onLost_(std::move(onLost)) {
        const std::uint32_t events =
            XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_->get(), connection_->root(), XCB_CW_EVENT_MASK,
                                     &events);
        // Read after selecting events, so that no change is missed.
        if (const auto lockers = reader_.read()) isLocked_ = lockHolder(*lockers).has_value();
        pump_.emplace(connection_, XcbEventPump::Handlers{
                                       .onEvent = [this](const auto& event) { note(event); },
                                       .onCaughtUp = [this] { update(); },
                                       .onLost =
                                           [this] {
                                               const auto report = onLost_;
                                               if (report) report(connection_->lostSentence());
                                           },
                                   });
    }

  private:
    /// Filters events: ordinary windows are no lockers, and an unmapped window can only unlock.
    void note(const xcb_generic_event_t& event) {
        switch (event.response_type & 0x7F) {
            case XCB_MAP_NOTIFY:
                isStale_ |= as<xcb_map_notify_event_t>(event).override_redirect != 0;
                break;
            case XCB_CONFIGURE_NOTIFY:
                isStale_ |= as<xcb_configure_notify_event_t>(event).override_redirect != 0;
                break;
            case XCB_REPARENT_NOTIFY:
                isStale_ |= isLocked_ || as<xcb_reparent_notify_event_t>(event).override_redirect;
                break;
            case XCB_UNMAP_NOTIFY:
            case XCB_DESTROY_NOTIFY:
                isStale_ |= isLocked_;
                break;
            case XCB_PROPERTY_NOTIFY:
                isStale_ |=
                    as<xcb_property_notify_event_t>(event).atom == reader_.screenSaverStatusAtom();
                break;
            default:
                break;
        }
    }

    void update() {
        if (!std::exchange(isStale_, false)) return;
        const auto lockers = reader_.read();
        if (!lockers) return;
        const bool isLocked = lockHolder(*lockers).has_value();
        if (std::exchange(isLocked_, isLocked) == isLocked) return;
        // Copy: the callback may destroy this object.
        if (const auto report = onChange_) report();
    }

    template <typename Event>
    [[nodiscard]] static const Event& as(const xcb_generic_event_t& event) {
        return reinterpret_cast<const Event&>(event);
    }

    const std::shared_ptr<const XcbConnection> connection_;
    const X11LockerWindowReader reader_;
    const std::function<void()> onChange_;
    const std::function<void(std::string)> onLost_;
    bool isLocked_ = false;
    bool isStale_ = false;
    std::optional<XcbEventPump> pump_;
};

std::expected<std::unique_ptr<X11LockWatcher>, std::string> X11LockWatcher::create(
    const std::string& displayName, std::function<void()> onChange,
    std::function<void(std::string)> onLost) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    return std::unique_ptr<X11LockWatcher>(new X11LockWatcher(
        std::make_unique<Watch>(std::move(*connection), std::move(onChange), std::move(onLost))));
}

X11LockWatcher::X11LockWatcher(std::unique_ptr<Watch> watch) : watch_(std::move(watch)) {}

X11LockWatcher::~X11LockWatcher() = default;

}  // namespace marrowby
