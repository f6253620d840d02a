#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdint>
#include <optional>
#include <set>
#include <utility>

#include <xcb/xinput.h>

namespace marrowby {

/// Raw keys of a display as XInput 2.1 tells them to one connection: below all grabs, and with the
/// device that they come from. For the adapters of this folder only.
class XRawKeys {
  public:
    struct Key {
        std::uint32_t keycode = 0;
        bool down = false;
        /// Sent through XTEST, by whatever program.
        bool isSynthetic = false;
    };

    /// Who presses them. What programs send through XTEST, this one included, is nobody else's; a
    /// keyboard that is plugged in later is not heard then.
    enum class Whose { everybodys, usersOnly };

    [[nodiscard]] static bool areOffered(const XcbConnection& connection);
    /// From now on the connection gets them. Nothing where the display has no such keys.
    [[nodiscard]] static std::optional<XRawKeys> select(const XcbConnection& connection,
                                                        Whose whose);

    /// Nothing for any other event.
    [[nodiscard]] std::optional<Key> read(const xcb_generic_event_t& event) const;

  private:
    XRawKeys(std::uint8_t opcode, std::set<xcb_input_device_id_t> syntheticKeyboards)
        : opcode_(opcode), syntheticKeyboards_(std::move(syntheticKeyboards)) {}

    std::uint8_t opcode_;
    std::set<xcb_input_device_id_t> syntheticKeyboards_;
};

}  // namespace marrowby
