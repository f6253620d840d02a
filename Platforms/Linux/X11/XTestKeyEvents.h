// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/X11/LockerIdentity.h"
#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace marrowby {

class XcbConnection;

/// Keys through the XTEST extension. Any thread.
///
/// A source uses the keys that give a character without a modifier in the active layout, and lends
/// all other characters to unused keys. So held keys and Caps Lock change nothing, and lockers that
/// read modifiers late see none. No source for a text with control characters, or that needs more
/// keys than are unused (19 with Xvfb's default layout).
///
/// A source is admitted only if a known screen locker has grabbed the keyboard and covers the
/// screen. From then on each stroke reaches that client only, or comes back to us and ends the
/// source. Not protected: raw keys, which every program of the user can read, also those typed by
/// hand.
class XTestKeyEvents final : public KeyEvents {
  public:
    using Pause = std::function<void(TimeInterval)>;

    static void sleep(TimeInterval duration);

    /// `displayName` as in DISPLAY. `pause` performs every wait, also those between events.
    explicit XTestKeyEvents(std::string displayName, Pause pause = &sleep);
    ~XTestKeyEvents() override;

    /// Called on the typing thread with the reason when a source is not admitted. Set it before the
    /// first source.
    std::function<void(const LockerDoubt&)> onDoubt;
    void vouchFor(const std::vector<std::string>& paths) override;
    void setUnknownLockerHandler(const std::function<void(std::string path)>& handler) override;

    [[nodiscard]] bool isTrusted() const override;
    [[nodiscard]] FieldClearing clearing() const override { return FieldClearing::controlU; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) override;
    /// Needed by MATE's locker, xsecurelock and xscreensaver. A field that is already there stays.
    void wakeField(const std::function<bool()>& stillLocked) override;
    void pause(TimeInterval duration) override { pause_(duration); }

    /// What one source goes by.
    struct Rules;

  private:
    [[nodiscard]] Rules rules() const;

    std::string displayName_;
    Pause pause_;
    mutable Mutex mutex_;
    std::vector<std::string> vouched_ GUARDED_BY(mutex_);
    std::function<void(std::string)> onUnknownLocker_ GUARDED_BY(mutex_);
    /// Kept open: trust is checked before every event of the engine.
    mutable std::unique_ptr<XcbConnection> trusted_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
