#pragma once

#include "Platforms/Linux/X11/LockerWindows.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <optional>

namespace marrowby {

/// Reads what lockers leave on a display, in three round trips at most. For the adapters of this
/// folder only. The connection outlives it.
class X11LockerWindowReader {
  public:
    explicit X11LockerWindowReader(const XcbConnection& connection);

    /// Nothing on a lost display.
    [[nodiscard]] std::optional<LockerWindows> read() const;
    /// The property of the root that LockerWindows::screenSaverState is read from.
    [[nodiscard]] xcb_atom_t screenSaverStatusAtom() const { return screenSaverStatus_; }

  private:
    const XcbConnection& connection_;
    xcb_atom_t screenSaverStatus_;
};

}  // namespace marrowby
