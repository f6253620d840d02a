// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>

namespace marrowby {

struct UnlockOpening {
    enum class Window : std::uint8_t { welcome, settings };

    struct State {
        /// Face, password and permissions are set up.
        bool isReady = false;
        bool finishedWelcome = false;
        bool welcomeOpen = false;
        bool settingsOpen = false;
    };

    struct Launch {
        /// Started with the session, not by the user.
        bool isAtLogin = false;
        /// The screen is unlocked, so that the user sees a window.
        bool isVisible = false;
    };

    /// An open window comes to the front.
    [[nodiscard]] static Window onReopen(const State& state);
    [[nodiscard]] static std::optional<Window> onLaunch(const State& state, const Launch& launch);
};

}  // namespace marrowby
