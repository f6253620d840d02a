// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Wayland/WaylandConnection.h"

#include <QSocketNotifier>
#include <utility>

#include <wayland-client.h>

namespace marrowby {

WaylandConnection::WaylandConnection(const std::string& display, Handlers handlers)
    : handlers_(std::move(handlers)), display_(wl_display_connect(display.c_str())) {
    if (display_ == nullptr) return;
    registry_ = wl_display_get_registry(display_);
    static constexpr wl_registry_listener listener{
        .global = &WaylandConnection::onGlobal,
        .global_remove = &WaylandConnection::onGlobalRemoved};
    wl_registry_add_listener(registry_, &listener, this);
    readable_ =
        std::make_unique<QSocketNotifier>(wl_display_get_fd(display_), QSocketNotifier::Read);
    QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(),
                     [this] { read(); });
    wl_display_flush(display_);
}

WaylandConnection::~WaylandConnection() {
    readable_.reset();
    if (registry_ != nullptr) wl_registry_destroy(registry_);
    if (display_ != nullptr) wl_display_disconnect(display_);
}

void WaylandConnection::read() {
    while (wl_display_prepare_read(display_) != 0)
        wl_display_dispatch_pending(display_);
    if (wl_display_read_events(display_) < 0 || wl_display_dispatch_pending(display_) < 0) {
        // Not deleted: this is called from its signal.
        readable_->setEnabled(false);
        return handlers_.onLost();
    }
    handlers_.onCaughtUp();
    wl_display_flush(display_);
}

void WaylandConnection::onGlobal(void* self, wl_registry* registry, std::uint32_t name,
                                 const char* interface, std::uint32_t /*version*/) {
    static_cast<WaylandConnection*>(self)->handlers_.onGlobal(registry, name, interface);
}

void WaylandConnection::onGlobalRemoved(void* self, wl_registry* /*registry*/, std::uint32_t name) {
    static_cast<WaylandConnection*>(self)->handlers_.onGlobalRemoved(name);
}

}  // namespace marrowby
