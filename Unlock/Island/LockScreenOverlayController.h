// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Kit/LockScreen.h"
#include "Kit/LockScreenWindow.h"
#include "Unlock/Island/Island.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"

#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// Shows the engine's phases on the island above the lock screen. Runs a timer only while the
/// island moves. If the system provides no panel it shows nothing and retries at the next phase.
/// Main thread; the references outlive it.
class LockScreenOverlayController final : public UnlockCoordinator::Presenting {
  public:
    struct Services {
        LockScreen& lockScreen;
        MainThread& mainThread;
        const SystemClock& clock;
    };

    explicit LockScreenOverlayController(Services services) : services_(services) {}
    LockScreenOverlayController(const LockScreenOverlayController&) = delete;
    LockScreenOverlayController& operator=(const LockScreenOverlayController&) = delete;
    ~LockScreenOverlayController() override { hide(); }

    void show(const OverlayPhase& phase) override;

    /// The pointer entered the island in a phase where that starts a scan; watched only then.
    std::function<void()> onHover;

  private:
    [[nodiscard]] Island island();
    [[nodiscard]] bool place();
    void update();
    void hide();
    void watchPointer();
    void pointerIsAt(const Point& place);

    Services services_;
    OverlayPhase phase_ = OverlayPhase::Hidden{};
    Date phaseBegan_;
    Size begin_;
    ScreenGeometry screen_;
    std::shared_ptr<PanelContent> content_ = std::make_shared<PanelContent>();
    std::optional<LockScreenWindow> window_;
    bool isShown_ = false;
    std::unique_ptr<MainThread::Timer> timer_;
    std::unique_ptr<WindowServer::PointerWatch> pointerWatch_;
    /// Unknown until the watch's first report.
    std::optional<bool> isHovering_;
};

}  // namespace marrowby
