#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// Gives characters to keys that have none, and takes them away again. Which keys (not which
/// characters) is noted on the root window meanwhile, so that the next start of the program can
/// take back what one that was killed has left: a character on such a key is one of the password.
///
/// For the adapters of this folder only. One thread; the connection outlives it.
class XLentKeys {
  public:
    explicit XLentKeys(const XcbConnection& connection) : connection_(connection) {}
    ~XLentKeys() { takeBack(); }
    XLentKeys(const XLentKeys&) = delete;
    XLentKeys& operator=(const XLentKeys&) = delete;

    /// Notes the keys that will be lent; before the first lend().
    void note(const std::vector<xcb_keycode_t>& keys);
    void lend(xcb_keycode_t key, xcb_keysym_t keysym) const;
    void takeBack();

    /// Takes back what a process that is gone has lent on this display.
    static void repair(const XcbConnection& connection);

  private:
    const XcbConnection& connection_;
    std::vector<xcb_keycode_t> keys_;
    /// Goes with the connection, which tells a note that is in use from one left behind.
    xcb_window_t witness_ = XCB_NONE;
};

}  // namespace marrowby
