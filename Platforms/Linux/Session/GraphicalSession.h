// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <string>

/// Whether this process can open windows.
namespace marrowby::graphicalsession {

/// Forgets a WAYLAND_DISPLAY that doesn't answer: others would take it for the session's. Before
/// any other thread.
void forgetStaleDisplay();

/// Qt's platform to use, where only one of those in the environment answers; empty where Qt may
/// choose. The error is a sentence for the user.
[[nodiscard]] std::expected<std::string, std::string> platform();

}  // namespace marrowby::graphicalsession
