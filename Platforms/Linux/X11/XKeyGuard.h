// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/XcbConnection.h"

#include <bitset>
#include <cstdint>
#include <span>
#include <vector>

#include <xcb/xproto.h>

namespace marrowby {

/// The client that has grabbed the keyboard.
struct XKeyHolder {
    /// Its resource ID base.
    std::uint32_t client = 0;
    std::int64_t process = 0;
    /// Its windows (or its family's) that cover the screen.
    std::vector<xcb_window_t> covers;
};

/// Sends keys that only the client with the keyboard grab can receive; if there is none, they come
/// back to us. An attempt at an active grab, which fails while another client holds the keyboard,
/// is sent with the key in one write under a server grab. In case the server handles that client's
/// exit in between, a passive grab of the key catches it. Clients that read raw keys are not
/// excluded: no grab applies to those.
///
/// Whether the holder is still the same is checked under the same server grab, so no client can
/// replace it between the check and the keys.
///
/// One thread; the connection outlives it.
class XKeyGuard {
  public:
    struct Event {
        xcb_keycode_t key = 0;
        bool down = false;
    };
    enum class Sent {
        toHolder,
        /// The keys came back to us, or the receiver is unknown. Send nothing more.
        toNobody,
        displayLost,
    };

    explicit XKeyGuard(const XcbConnection& connection) : connection_(connection) {}
    ~XKeyGuard() { release(); }
    XKeyGuard(const XKeyGuard&) = delete;
    XKeyGuard& operator=(const XKeyGuard&) = delete;

    /// Grabs all keys passively, so that the grabs do not reveal which ones will be used. Keys that
    /// window managers and hotkey programs have grabbed stay theirs.
    void arm();
    /// Whether an unmodified press of `key` would come to us.
    [[nodiscard]] bool covers(xcb_keycode_t key) const { return covered_[key]; }
    [[nodiscard]] bool isKeyboardHeld() const;

    /// Sends the events in order to `holder` only or, if it is null, to whichever client has the
    /// grab.
    [[nodiscard]] Sent send(std::span<const Event> events, const XKeyHolder* holder) const;

    /// Has the server serve us alone while it lives: no other client can take the keyboard or delay
    /// the keys. Keep it short: the display stands still.
    class Burst {
      public:
        explicit Burst(const XKeyGuard& guard, const XKeyHolder* holder);
        ~Burst();
        Burst(const Burst&) = delete;
        Burst& operator=(const Burst&) = delete;

        [[nodiscard]] Sent send(std::span<const Event> events) const;

      private:
        const XcbConnection& connection_;
        const bool isHolders_;
    };
    void release();

  private:
    [[nodiscard]] bool isUnchanged(const XKeyHolder& holder) const;

    const XcbConnection& connection_;
    std::bitset<256> covered_;
    bool isArmed_ = false;
};

}  // namespace marrowby
