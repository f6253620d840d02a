#pragma once

#include "Platforms/Linux/LockerTraces.h"
#include "Platforms/Linux/XcbConnection.h"

#include <optional>

namespace marrowby {

/// Reads what lockers leave on a display, in three round trips at most. For the adapters of this
/// folder only. The connection outlives it.
class X11LockerTraceReader {
  public:
    explicit X11LockerTraceReader(const XcbConnection& connection);

    /// Nothing on a lost display.
    [[nodiscard]] std::optional<LockerTraces> read() const;
    /// The property of the root that LockerTraces::screenSaverState is read from.
    [[nodiscard]] xcb_atom_t screenSaverStatusAtom() const { return screenSaverStatus_; }

  private:
    const XcbConnection& connection_;
    xcb_atom_t screenSaverStatus_;
};

}  // namespace marrowby
