// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <ext-idle-notify-v1-server-protocol.h>
#include <gtest/gtest.h>
#include <kwin-dpms-server-protocol.h>
#include <wayland-server.h>

namespace marrowby {

/// A compositor without a screen, whose user pauses and whose displays go off when the test says.
class ScriptedCompositor {
  public:
    explicit ScriptedCompositor(const std::string& socket) : display_(wl_display_create()) {
        EXPECT_EQ(wl_display_add_socket(display_, socket.c_str()), 0);
    }
    ScriptedCompositor(const ScriptedCompositor&) = delete;
    ScriptedCompositor& operator=(const ScriptedCompositor&) = delete;
    ~ScriptedCompositor() {
        wl_display_destroy_clients(display_);
        wl_display_destroy(display_);
    }

    void addSeat() { wl_global_create(display_, &wl_seat_interface, 1, this, &bindSeat); }
    void addNotifier() {
        wl_global_create(display_, &ext_idle_notifier_v1_interface, 1, this, &bindNotifier);
    }
    /// KWin's: the power of its outputs.
    void addPower() {
        wl_global_create(display_, &org_kde_kwin_dpms_manager_interface, 1, this, &bindPower);
    }
    struct Output {
        bool canBeOff = true;
        bool isBound = false;
        wl_global* global = nullptr;
        wl_resource* power = nullptr;
        std::uint32_t mode = ORG_KDE_KWIN_DPMS_MODE_ON;

        /// As KWin announces it, for one client.
        void become(std::uint32_t newMode) {
            mode = newMode;
            org_kde_kwin_dpms_send_mode(power, mode);
            org_kde_kwin_dpms_send_done(power);
        }
    };
    Output& addOutput(bool canBeOff = true) {
        auto& output =
            *outputs_.emplace_back(std::make_unique<Output>(Output{.canBeOff = canBeOff}));
        output.global = wl_global_create(display_, &wl_output_interface, 1, &output, &bindOutput);
        return output;
    }
    /// Its clients may still use what they have bound.
    static void unplug(const Output& output) { wl_global_remove(output.global); }

    void turn() {
        wl_event_loop_dispatch(wl_display_get_event_loop(display_), 0);
        wl_display_flush_clients(display_);
    }
    void pause() const { ext_idle_notification_v1_send_idled(notification); }
    void resume() const { ext_idle_notification_v1_send_resumed(notification); }

    int seats = 0;
    std::uint32_t timeout = 0;
    wl_resource* notification = nullptr;

  private:
    static ScriptedCompositor& of(void* data) { return *static_cast<ScriptedCompositor*>(data); }
    static void destroy(wl_client* /*client*/, wl_resource* resource) {
        wl_resource_destroy(resource);
    }
    static void bindSeat(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
        ++of(data).seats;
        wl_resource_create(client, &wl_seat_interface, static_cast<int>(version), id);
    }
    static void bindNotifier(wl_client* client, void* data, std::uint32_t version,
                             std::uint32_t id) {
        static constexpr struct ext_idle_notifier_v1_interface requests{
            .destroy = &destroy, .get_idle_notification = &notify};
        wl_resource* const resource = wl_resource_create(client, &ext_idle_notifier_v1_interface,
                                                         static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }
    static void notify(wl_client* client, wl_resource* notifier, std::uint32_t id,
                       std::uint32_t timeout, wl_resource* /*seat*/) {
        static constexpr struct ext_idle_notification_v1_interface requests{.destroy = &destroy};
        auto& self = of(wl_resource_get_user_data(notifier));
        self.timeout = timeout;
        self.notification = wl_resource_create(client, &ext_idle_notification_v1_interface, 1, id);
        wl_resource_set_implementation(self.notification, &requests, &self, nullptr);
    }
    static void bindOutput(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
        wl_resource* const resource =
            wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(resource, nullptr, data, nullptr);
        static_cast<Output*>(data)->isBound = true;
    }
    static void bindPower(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
        static constexpr struct org_kde_kwin_dpms_manager_interface requests{.get = &getPower};
        wl_resource* const resource = wl_resource_create(
            client, &org_kde_kwin_dpms_manager_interface, static_cast<int>(version), id);
        wl_resource_set_implementation(resource, &requests, data, nullptr);
    }
    static void getPower(wl_client* client, wl_resource* /*manager*/, std::uint32_t id,
                         wl_resource* output) {
        static constexpr struct org_kde_kwin_dpms_interface requests{.set = nullptr,
                                                                     .release = &destroy};
        auto& self = *static_cast<Output*>(wl_resource_get_user_data(output));
        self.power = wl_resource_create(client, &org_kde_kwin_dpms_interface, 1, id);
        wl_resource_set_implementation(self.power, &requests, &self, [](wl_resource* resource) {
            auto& gone = *static_cast<Output*>(wl_resource_get_user_data(resource));
            if (gone.power == resource) gone.power = nullptr;
        });
        org_kde_kwin_dpms_send_supported(self.power, self.canBeOff ? 1 : 0);
        self.become(self.mode);
    }

    wl_display* const display_;
    std::vector<std::unique_ptr<Output>> outputs_;
};

}  // namespace marrowby
