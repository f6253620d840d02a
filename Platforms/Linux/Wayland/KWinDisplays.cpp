// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Wayland/KWinDisplays.h"

#include "Platforms/Linux/Wayland/WaylandConnection.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include <kwin-dpms-client-protocol.h>
#include <wayland-client.h>

namespace marrowby {

class KWinDisplays::Client {
  public:
    Client(KWinDisplays& displays, const std::string& display)
        : displays_(displays),
          connection_(display,
                      {.onGlobal = [this](auto* registry, auto name,
                                          auto interface) { bind(registry, name, interface); },
                       .onGlobalRemoved = [this](std::uint32_t name) { outputs_.erase(name); },
                       .onCaughtUp = [this] { judge(); },
                       .onLost = [this] { set(false); }}) {}
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;
    ~Client() {
        outputs_.clear();
        if (manager_ != nullptr) org_kde_kwin_dpms_manager_destroy(manager_);
    }

    [[nodiscard]] bool areAsleep() const { return areAsleep_; }

  private:
    struct Output {
        explicit Output(wl_output* bound) : output(bound) {}
        Output(const Output&) = delete;
        Output& operator=(const Output&) = delete;
        ~Output() {
            if (power != nullptr) org_kde_kwin_dpms_release(power);
            wl_output_destroy(output);
        }

        wl_output* const output;
        org_kde_kwin_dpms* power = nullptr;
        bool canBeOff = false;
        bool isModeOn = true;
        /// As of the last announcement; nothing before the first.
        std::optional<bool> isOff;
    };

    void bind(wl_registry* registry, std::uint32_t name, std::string_view interface) {
        if (interface == wl_output_interface.name) {
            outputs_.try_emplace(name, static_cast<wl_output*>(wl_registry_bind(
                                           registry, name, &wl_output_interface, 1)));
        } else if (interface == org_kde_kwin_dpms_manager_interface.name && manager_ == nullptr) {
            manager_ = static_cast<org_kde_kwin_dpms_manager*>(
                wl_registry_bind(registry, name, &org_kde_kwin_dpms_manager_interface, 1));
        }
        if (manager_ == nullptr) return;
        static constexpr org_kde_kwin_dpms_listener listener{
            .supported = &Client::onSupported, .mode = &Client::onMode, .done = &Client::onDone};
        for (auto& [id, output] : outputs_) {
            if (output.power != nullptr) continue;
            output.power = org_kde_kwin_dpms_manager_get(manager_, output.output);
            org_kde_kwin_dpms_add_listener(output.power, &listener, &output);
        }
    }

    void judge() {
        // A monitor may disappear when it is switched off: without any, all is as it was.
        if (std::ranges::none_of(outputs_, isKnown)) return;
        set(std::ranges::all_of(outputs_,
                                [](const auto& item) { return item.second.isOff.value_or(true); }));
    }
    static bool isKnown(const std::pair<const std::uint32_t, Output>& item) {
        return item.second.isOff.has_value();
    }
    void set(bool areAsleep) {
        if (std::exchange(areAsleep_, areAsleep) != areAsleep && displays_.onChange)
            displays_.onChange();
    }

    static void onSupported(void* output, org_kde_kwin_dpms* /*power*/, std::uint32_t supported) {
        static_cast<Output*>(output)->canBeOff = supported != 0;
    }
    static void onMode(void* output, org_kde_kwin_dpms* /*power*/, std::uint32_t mode) {
        static_cast<Output*>(output)->isModeOn = mode == ORG_KDE_KWIN_DPMS_MODE_ON;
    }
    static void onDone(void* data, org_kde_kwin_dpms* /*power*/) {
        auto& output = *static_cast<Output*>(data);
        output.isOff = output.canBeOff && !output.isModeOn;
    }

    KWinDisplays& displays_;
    WaylandConnection connection_;
    org_kde_kwin_dpms_manager* manager_ = nullptr;
    /// By their names in the registry.
    std::map<std::uint32_t, Output> outputs_;
    bool areAsleep_ = false;
};

KWinDisplays::KWinDisplays(const std::string& display)
    : client_(std::make_unique<Client>(*this, display)) {}

KWinDisplays::~KWinDisplays() = default;

bool KWinDisplays::areAsleep() const {
    return client_->areAsleep();
}

}  // namespace marrowby
