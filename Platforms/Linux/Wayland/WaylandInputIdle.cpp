// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Wayland/WaylandInputIdle.h"

#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Wayland/WaylandConnection.h"
#include "UnlockCore/Platform/IdleEdges.h"

#include <chrono>
#include <cstdint>
#include <string_view>

#include <ext-idle-notify-v1-client-protocol.h>
#include <wayland-client.h>

namespace marrowby {

class WaylandInputIdle::Client {
  public:
    explicit Client(const std::string& display)
        : connection_(display,
                      {.onGlobal = [this](auto* registry, auto name,
                                          auto interface) { bind(registry, name, interface); },
                       .onGlobalRemoved = [](std::uint32_t) {},
                       .onCaughtUp = [] {},
                       .onLost = [this] { isGone_ = true; }}) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        if (notification_ != nullptr) ext_idle_notification_v1_destroy(notification_);
        if (notifier_ != nullptr) ext_idle_notifier_v1_destroy(notifier_);
        if (seat_ != nullptr) wl_seat_destroy(seat_);
    }

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const {
        if (notification_ == nullptr || isGone_) return std::nullopt;
        return edges_.sinceLastInput(unixtime::uptime());
    }

  private:
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

    static void onPaused(void* self, ext_idle_notification_v1* /*notification*/) {
        static_cast<Client*>(self)->edges_.paused(unixtime::uptime());
    }
    static void onResumed(void* self, ext_idle_notification_v1* /*notification*/) {
        static_cast<Client*>(self)->edges_.resumed();
    }

    WaylandConnection connection_;
    wl_seat* seat_ = nullptr;
    ext_idle_notifier_v1* notifier_ = nullptr;
    ext_idle_notification_v1* notification_ = nullptr;
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
