#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <bitset>
#include <cstdint>
#include <span>
#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// The client that has grabbed the keyboard, as it was found.
struct XKeyHolder {
    /// The first ID of its resources.
    std::uint32_t client = 0;
    std::int64_t process = 0;
    /// The windows that cover the screen for it.
    std::vector<xcb_window_t> covers;
};

/// Sends keys that the server gives to nobody but the client that has grabbed the keyboard: without
/// such a grab they come back to us. Two grabs of our own see to that. An attempt at an active one,
/// which fails while somebody else holds the keyboard, goes out with the key in one write and under
/// a grab of the server; should the server serve another client's end in between, a passive grab of
/// the key is there. Not guarded: who reads raw keys, to which no grab applies.
///
/// Whether the holder is still the one that was found is asked under the same grab of the server,
/// so that nobody can take its place between the answer and the key.
///
/// For the adapters of this folder only. One thread; the connection outlives it.
class XKeyGuard {
  public:
    struct Event {
        xcb_keycode_t key = 0;
        bool down = false;
    };
    enum class Sent {
        toHolder,
        /// They came back to us, or nobody can tell. Nothing more may be sent.
        toNobody,
        displayLost,
    };

    explicit XKeyGuard(const XcbConnection& connection) : connection_(connection) {}
    ~XKeyGuard() { release(); }
    XKeyGuard(const XKeyGuard&) = delete;
    XKeyGuard& operator=(const XKeyGuard&) = delete;

    /// Grabs all keys passively, so that it shows nothing about those to be used. Window managers
    /// and hotkey programs keep what they have grabbed before.
    void arm();
    /// Whether a press of `key` without modifiers would come to us.
    [[nodiscard]] bool covers(xcb_keycode_t key) const { return covered_[key]; }
    /// Whether another client has grabbed the keyboard.
    [[nodiscard]] bool isKeyboardHeld() const;

    /// The events in order, to `holder` alone, or, while it is still looked for, to whoever holds
    /// the keyboard.
    [[nodiscard]] Sent send(std::span<const Event> events, const XKeyHolder* holder) const;
    /// Ends the passive grabs.
    void release();

  private:
    [[nodiscard]] bool stands(const XKeyHolder& holder) const;

    const XcbConnection& connection_;
    std::bitset<256> covered_;
    bool isArmed_ = false;
};

}  // namespace marrowby
