// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// Maps characters to unused keys temporarily. Meanwhile a property of the root window lists the
/// keys (not the characters), so that the next start of the program can reset them after a kill: a
/// leftover character is one of the password's.
///
/// One thread; the connection outlives it.
class XLentKeys {
  public:
    explicit XLentKeys(const XcbConnection& connection) : connection_(connection) {}
    ~XLentKeys() { takeBack(); }
    XLentKeys(const XLentKeys&) = delete;
    XLentKeys& operator=(const XLentKeys&) = delete;

    /// Writes the property. Call before the first lend().
    void note(const std::vector<xcb_keycode_t>& keys);
    void lend(xcb_keycode_t key, xcb_keysym_t keysym) const;
    void takeBack();

    /// Resets the keys that a dead process has left mapped.
    static void repair(const XcbConnection& connection);

  private:
    const XcbConnection& connection_;
    std::vector<xcb_keycode_t> keys_;
    /// Disappears with the connection, which shows that a property was left behind.
    xcb_window_t witness_ = XCB_NONE;
};

}  // namespace marrowby
