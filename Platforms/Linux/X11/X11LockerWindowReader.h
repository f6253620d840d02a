// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/ClientPrograms.h"
#include "Platforms/Linux/X11/LockerWindows.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <optional>

namespace marrowby {

/// Reads a display's LockerWindows in at most three round trips, and one for each shown window
/// without a name. The connection outlives it.
class X11LockerWindowReader {
  public:
    explicit X11LockerWindowReader(const XcbConnection& connection);

    /// `nullopt` on a lost display.
    [[nodiscard]] std::optional<LockerWindows> read() const;
    /// The root property of LockerWindows::screenSaverState.
    [[nodiscard]] xcb_atom_t screenSaverStatusAtom() const { return screenSaverStatus_; }

  private:
    const XcbConnection& connection_;
    const ClientPrograms programs_;
    xcb_atom_t screenSaverStatus_;
};

}  // namespace marrowby
