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

/// Keys through the X server's XTEST extension; codes are keysyms. Any thread.
///
/// A source types with what the active layout gives without a modifier and lends every other
/// character to a key that has none. So held keys and Caps Lock change nothing, and lockers that
/// read modifiers late see none. No source where a text needs more such keys than the layout leaves
/// free (19 with the usual one of Xvfb), or holds control characters.
///
/// A source is admitted only where a known screen locker has grabbed the keyboard and covers the
/// screen. From then on each stroke goes to that client alone, or comes back to us and ends it. Raw
/// keys are beyond that: every program of the user can read them, as those of a hand.
class XTestKeyEvents final : public KeyEvents {
  public:
    using Pause = std::function<void(TimeInterval)>;

    /// Blocks the thread as pause() does.
    static void sleep(TimeInterval duration);

    /// `displayName` as in DISPLAY. `pause` takes every wait, also those between single events.
    explicit XTestKeyEvents(std::string displayName, Pause pause = &sleep);
    ~XTestKeyEvents() override;

    /// Told, on the typing thread, why a source was not admitted. Set before the first source.
    std::function<void(const LockerDoubt&)> onDoubt;
    void vouchFor(const std::vector<std::string>& paths) override;
    void setUnknownLockerHandler(const std::function<void(std::string path)>& handler) override;

    [[nodiscard]] bool isTrusted() const override;
    [[nodiscard]] KeyDialect dialect() const override { return KeyDialect::x11Locker; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const std::uint32_t> codes) override;
    void pause(TimeInterval duration) override { pause_(duration); }

  private:
    std::string displayName_;
    Pause pause_;
    mutable Mutex mutex_;
    std::vector<std::string> vouched_ GUARDED_BY(mutex_);
    std::function<void(std::string)> onUnknownLocker_ GUARDED_BY(mutex_);
    /// Stays open, because trust is asked for before every event of the engine.
    mutable std::unique_ptr<XcbConnection> trusted_ GUARDED_BY(mutex_);
};

}  // namespace marrowby
