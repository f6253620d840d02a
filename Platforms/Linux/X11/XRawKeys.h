// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include <xcb/xinput.h>

namespace marrowby {

/// Raw keys of a display (XInput 2.1), which bypass grabs, with their source device.
class XRawKeys {
  public:
    struct Key {
        std::uint32_t keycode = 0;
        bool down = false;
        /// Sent through XTEST by any program.
        bool isSynthetic = false;
    };

    /// `usersOnly` excludes XTEST keys, also this program's; keyboards plugged in later are not
    /// heard then.
    enum class Whose { everybodys, usersOnly };

    [[nodiscard]] static bool areOffered(const XcbConnection& connection);
    /// Subscribes the connection. `nullopt` when the display has no raw keys.
    [[nodiscard]] static std::optional<XRawKeys> select(const XcbConnection& connection,
                                                        Whose whose);

    /// `nullopt` for other events.
    [[nodiscard]] std::optional<Key> read(const xcb_generic_event_t& event) const;

  private:
    XRawKeys(std::uint8_t opcode, std::set<xcb_input_device_id_t> syntheticKeyboards)
        : opcode_(opcode), syntheticKeyboards_(std::move(syntheticKeyboards)) {}

    std::uint8_t opcode_;
    std::set<xcb_input_device_id_t> syntheticKeyboards_;
};

}  // namespace marrowby
