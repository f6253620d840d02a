// SPDX-License-Identifier: Apache-2.0
#include "Unlock/UnlockOpening.h"

namespace marrowby {

UnlockOpening::Window UnlockOpening::onReopen(const State& state) {
    if (state.welcomeOpen) return Window::welcome;
    if (state.settingsOpen) return Window::settings;
    return state.isReady ? Window::settings : Window::welcome;
}

std::optional<UnlockOpening::Window> UnlockOpening::onLaunch(const State& state,
                                                             const Launch& launch) {
    if (launch.isAtLogin || !launch.isVisible) return std::nullopt;
    return state.isReady ? Window::settings : Window::welcome;
}

}  // namespace marrowby
