#pragma once

#include <cstdint>
#include <optional>

namespace marrowby {

/// Which window the application shows when it is opened.
struct UnlockOpening {
    enum class Window : std::uint8_t { welcome, settings };

    struct State {
        /// Face, password and permissions are in place.
        bool isReady = false;
        bool finishedWelcome = false;
        bool welcomeOpen = false;
        bool settingsOpen = false;
    };

    /// The launch as the system tells of it.
    struct Launch {
        /// Started with the session rather than by the user.
        bool isAtLogin = false;
        /// The user is there to see a window: the screen is not locked.
        bool isVisible = false;
    };

    /// A window already open comes forward.
    [[nodiscard]] static Window onReopen(const State& state);
    [[nodiscard]] static std::optional<Window> onLaunch(const State& state, const Launch& launch);
};

}  // namespace marrowby
