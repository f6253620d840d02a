// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

class QSocketNotifier;
struct wl_display;
struct wl_registry;

namespace marrowby {

/// A connection to a Wayland compositor that never blocks. What was bound through it must be
/// destroyed before it. Main thread, under Qt's event loop; handlers must not destroy it.
class WaylandConnection {
  public:
    struct Handlers {
        /// For each global that the compositor has or gets.
        std::function<void(wl_registry*, std::uint32_t name, std::string_view interface)> onGlobal;
        std::function<void(std::uint32_t name)> onGlobalRemoved;
        /// After the handlers of all events that had come.
        std::function<void()> onCaughtUp;
        std::function<void()> onLost;
    };

    /// `display`: as in WAYLAND_DISPLAY. Where nobody is there, no handler is ever called.
    WaylandConnection(const std::string& display, Handlers handlers);
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

  private:
    void read();

    static void onGlobal(void* self, wl_registry* registry, std::uint32_t name,
                         const char* interface, std::uint32_t version);
    static void onGlobalRemoved(void* self, wl_registry* registry, std::uint32_t name);

    const Handlers handlers_;
    wl_display* const display_;
    wl_registry* registry_ = nullptr;
    std::unique_ptr<QSocketNotifier> readable_;
};

}  // namespace marrowby
