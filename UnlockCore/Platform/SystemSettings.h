// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace marrowby {

/// The system's own settings, and whether it opens the application with the session. Main thread.
class SystemSettings {
  public:
    enum class Pane : std::uint8_t { camera, accessibility, inputMonitoring };

    virtual ~SystemSettings() = default;
    /// False where there is nothing that could be opened.
    virtual bool open(Pane pane) = 0;

    [[nodiscard]] virtual bool opensAtLogin() const = 0;
    /// False when the system refused.
    virtual bool setOpensAtLogin(bool opens) = 0;
};

}  // namespace marrowby
