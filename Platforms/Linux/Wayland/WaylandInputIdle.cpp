// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Wayland/WaylandInputIdle.h"

#include "Platforms/Linux/Desktop/UnixClock.h"
#include "UnlockCore/Platform/IdleEdges.h"

#include <QSocketNotifier>
#include <chrono>
#include <cstdint>
#include <string_view>

#include <ext-idle-notify-v1-client-protocol.h>
#include <wayland-client.h>

namespace marrowby {

/// A connection of its own, which never blocks: what the compositor has is bound as it is told.
class WaylandInputIdle::Client {
  public:
    explicit Client(const std::string& display) : display_(wl_display_connect(display.c_str())) {
        if (display_ == nullptr) return;
        registry_ = wl_display_get_registry(display_);
        static constexpr wl_registry_listener listener{.global = &Client::onGlobal,
                                                       .global_remove = &Client::onGlobalRemoved};
        wl_registry_add_listener(registry_, &listener, this);
        readable_ =
            std::make_unique<QSocketNotifier>(wl_display_get_fd(display_), QSocketNotifier::Read);
        QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(),
                         [this] { read(); });
        wl_display_flush(display_);
    }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        readable_.reset();
        if (notification_ != nullptr) ext_idle_notification_v1_destroy(notification_);
        if (notifier_ != nullptr) ext_idle_notifier_v1_destroy(notifier_);
        if (seat_ != nullptr) wl_seat_destroy(seat_);
        if (registry_ != nullptr) wl_registry_destroy(registry_);
        if (display_ != nullptr) wl_display_disconnect(display_);
    }

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const {
        if (notification_ == nullptr || isGone_) return std::nullopt;
        return edges_.sinceLastInput(unixtime::uptime());
    }

  private:
    void read() {
        while (wl_display_prepare_read(display_) != 0)
            wl_display_dispatch_pending(display_);
        if (wl_display_read_events(display_) < 0 || wl_display_dispatch_pending(display_) < 0) {
            isGone_ = true;
            // Not deleted: this is called from its signal.
            return readable_->setEnabled(false);
        }
        wl_display_flush(display_);
    }

    void bind(wl_registry* registry, std::uint32_t name, std::string_view interface) {
        if (interface == wl_seat_interface.name && seat_ == nullptr) {
            seat_ = static_cast<wl_seat*>(wl_registry_bind(registry, name, &wl_seat_interface, 1));
        } else if (interface == ext_idle_notifier_v1_interface.name && notifier_ == nullptr) {
            notifier_ = static_cast<ext_idle_notifier_v1*>(
                wl_registry_bind(registry, name, &ext_idle_notifier_v1_interface, 1));
        }
        if (seat_ == nullptr || notifier_ == nullptr || notification_ != nullptr) return;
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(IdleEdges::pause);
        notification_ = ext_idle_notifier_v1_get_idle_notification(
            notifier_, static_cast<std::uint32_t>(milliseconds.count()), seat_);
        static constexpr ext_idle_notification_v1_listener listener{.idled = &Client::onPaused,
                                                                    .resumed = &Client::onResumed};
        ext_idle_notification_v1_add_listener(notification_, &listener, this);
    }

    static void onGlobal(void* self, wl_registry* registry, std::uint32_t name,
                         const char* interface, std::uint32_t /*version*/) {
        static_cast<Client*>(self)->bind(registry, name, interface);
    }
    static void onGlobalRemoved(void* /*self*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {
    }
    static void onPaused(void* self, ext_idle_notification_v1* /*notification*/) {
        static_cast<Client*>(self)->edges_.paused(unixtime::uptime());
    }
    static void onResumed(void* self, ext_idle_notification_v1* /*notification*/) {
        static_cast<Client*>(self)->edges_.resumed();
    }

    wl_display* const display_;
    wl_registry* registry_ = nullptr;
    wl_seat* seat_ = nullptr;
    ext_idle_notifier_v1* notifier_ = nullptr;
    ext_idle_notification_v1* notification_ = nullptr;
    std::unique_ptr<QSocketNotifier> readable_;
    IdleEdges edges_;
    /// The connection has failed.
    bool isGone_ = false;
};

WaylandInputIdle::WaylandInputIdle(const std::string& display)
    : client_(std::make_unique<Client>(display)) {}

WaylandInputIdle::~WaylandInputIdle() = default;

std::optional<TimeInterval> WaylandInputIdle::sinceLastInput() const {
    return client_->sinceLastInput();
}

TimeInterval WaylandInputIdle::systemUptime() const {
    return unixtime::uptime();
}

}  // namespace marrowby
