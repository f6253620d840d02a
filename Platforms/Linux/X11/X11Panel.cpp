// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11Panel.h"

#include "Platforms/Linux/X11/PanelPainter.h"
#include "Platforms/Linux/X11/PanelPlacement.h"
#include "Platforms/Linux/X11/X11LockerWindowReader.h"
#include "Platforms/Linux/X11/X11Screen.h"
#include "Platforms/Linux/X11/XPanelWindow.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Platforms/Linux/X11/XcbEventPump.h"

#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include <xcb/xfixes.h>

namespace marrowby {
namespace {

/// The compositing manager owns this selection.
constexpr const char* compositorSelection = "_NET_WM_CM_S0";

/// Whether the event may change the stacking of lockers; ordinary windows are none.
bool canMatter(const xcb_generic_event_t& event, xcb_window_t& window) {
    switch (event.response_type & 0x7F) {
        case XCB_MAP_NOTIFY: {
            const auto& map = reinterpret_cast<const xcb_map_notify_event_t&>(event);
            window = map.window;
            return map.override_redirect != 0;
        }
        case XCB_CONFIGURE_NOTIFY: {
            const auto& configure = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            window = configure.window;
            return configure.override_redirect != 0;
        }
        case XCB_UNMAP_NOTIFY:
            window = reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window;
            return true;
        case XCB_DESTROY_NOTIFY:
            window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
            return true;
        default:
            return false;
    }
}

}  // namespace

/// The state of a visible panel: a connection, and a window unless placement is `nowhere`.
class X11Panel::Shown {
  public:
    [[nodiscard]] static std::unique_ptr<Shown> create(const std::string& displayName,
                                                       const PanelContent& content,
                                                       std::function<void()> onLost) {
        auto connection = XcbConnection::create(displayName);
        if (!connection) return nullptr;
        return std::unique_ptr<Shown>(
            new Shown(std::move(*connection), content, std::move(onLost)));
    }

    [[nodiscard]] xcb_window_t windowID() const { return window_ ? window_->id() : XCB_NONE; }

    void bringTo(const Rect& frame) {
        frame_ = frame;
        rearrange();
        if (window_) window_->raise();
    }

    void draw() const {
        if (!window_) return;
        window_->show(panelpainter::paint(
            content_.drawing(), {.width = frame_.width, .height = frame_.height}, scale_));
    }

  private:
    Shown(std::shared_ptr<const XcbConnection> connection, const PanelContent& content,
          std::function<void()> onLost)
        : connection_(std::move(connection)),
          content_(content),
          reader_(*connection_),
          compositor_(connection_->atom(compositorSelection)) {
        xcb_connection_t* const xcb = connection_->get();
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(xcb, connection_->root(), XCB_CW_EVENT_MASK, &events);
        if (const auto* xfixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
            xfixes && xfixes->present) {
            compositorEvent_ =
                static_cast<std::uint8_t>(xfixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
            (void)connection_->reply<xcb_xfixes_query_version_reply>(
                xcb_xfixes_query_version(xcb, 5, 0));
            xcb_xfixes_select_selection_input(
                xcb, connection_->root(), compositor_,
                XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY |
                    XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE);
        }
        pump_.emplace(connection_,
                      XcbEventPump::Handlers{.onEvent = [this](const auto& event) { note(event); },
                                             .onCaughtUp = [this] { followEvents(); },
                                             .onLost = std::move(onLost)});
    }

    void note(const xcb_generic_event_t& event) {
        const int kind = event.response_type & 0x7F;
        if (compositorEvent_ != 0 && kind == compositorEvent_) isStale_ = true;
        xcb_window_t window = XCB_NONE;
        if (!canMatter(event, window) || window == windowID()) return;
        isStale_ = true;
        isCovered_ |= kind == XCB_MAP_NOTIFY;
    }

    void followEvents() {
        if (std::exchange(isStale_, false)) rearrange();
        if (std::exchange(isCovered_, false) && window_) window_->raise();
    }

    void rearrange() {
        const auto lockers = reader_.read();
        const auto screen = X11Screen::main(*connection_);
        if (!lockers || !screen) return;
        scale_ = screen->scale;
        const auto owner = connection_->reply<xcb_get_selection_owner_reply>(
            xcb_get_selection_owner(connection_->get(), compositor_));
        const PanelPlacement placement =
            panelPlacement(*lockers, owner && owner->owner != XCB_NONE);
        const auto pixel = [this](double points) { return std::lround(points * scale_); };
        const XPanelWindow::Frame frame{
            .x = static_cast<std::int16_t>(pixel(frame_.x)),
            .y = static_cast<std::int16_t>(pixel(frame_.y)),
            .width = static_cast<std::uint16_t>(std::ceil(frame_.width * scale_)),
            .height = static_cast<std::uint16_t>(std::ceil(frame_.height * scale_))};
        if (window_ && window_->placement() == placement && window_->frame() == frame) return;
        window_.reset();
        window_ = XPanelWindow::create(*connection_, placement, frame);
        draw();
    }

    const std::shared_ptr<const XcbConnection> connection_;
    const PanelContent& content_;
    const X11LockerWindowReader reader_;
    const xcb_atom_t compositor_;
    std::uint8_t compositorEvent_ = 0;
    Rect frame_;
    double scale_ = 1;
    bool isStale_ = false;
    bool isCovered_ = false;
    std::unique_ptr<XPanelWindow> window_;
    std::optional<XcbEventPump> pump_;
};

X11Panel::X11Panel(std::string displayName, const Rect& frame,
                   std::shared_ptr<PanelContent> content)
    : displayName_(std::move(displayName)), frame_(frame), content_(std::move(content)) {
    content_->onChange([this] {
        if (shown_) shown_->draw();
    });
}

X11Panel::~X11Panel() {
    content_->onChange({});
}

std::int64_t X11Panel::windowNumber() const {
    return shown_ ? shown_->windowID() : 0;
}

void X11Panel::orderFront() {
    if (!shown_) shown_ = Shown::create(displayName_, *content_, [this] { shown_.reset(); });
    if (shown_) shown_->bringTo(frame_);
}

void X11Panel::orderOut() {
    shown_.reset();
}

}  // namespace marrowby
