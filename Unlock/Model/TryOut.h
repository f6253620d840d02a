// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/TrialLook.h"
#include "UnlockCore/Engine/FaceScanning.h"
#include "UnlockCore/Engine/ScanInsight.h"
#include "UnlockCore/Engine/UnlockReadiness.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/Platform/MainThread.h"
#include "UnlockCore/Platform/SystemClock.h"
#include "UnlockCore/Platform/WindowServer.h"

#include <functional>
#include <memory>
#include <optional>

namespace marrowby {

/// One trial look after another with the camera on all the time, and what they see and think. Types
/// nothing and keeps nothing. Main thread; destroying it turns the camera off.
class TryOut final : private FaceScanning {
  public:
    struct View {
        /// Of the newest picture.
        std::optional<ScanInsight> insight;
        /// Of the last look, until the next begins.
        std::optional<TrialLook::Result> result;
    };

    /// All outlive this.
    struct Services {
        FaceScanning& scanner;
        MainThread& mainThread;
        const SystemClock& clock;
        WindowServer& windowServer;
        std::function<UnlockReadiness()> readiness;
    };

    /// How long a result stays.
    static constexpr TimeInterval pause{3};

    /// `onChange` may destroy this.
    TryOut(Services services, std::function<void(const View&)> onChange);
    TryOut(const TryOut&) = delete;
    TryOut& operator=(const TryOut&) = delete;
    ~TryOut() override;

    void start() { look(); }

  private:
    void look();
    void lookEnded(const TrialLook::Result& result);
    void tell();

    // Of the look under way: its end leaves the camera on and the scan going, for its insight.
    void start(ScanID scan, const ScanConfiguration& configuration, Callbacks callbacks) override;
    void stop() override { ofLook_.reset(); }

    const Services services_;
    const std::function<void(const View&)> onChange_;
    View view_;
    std::optional<Callbacks> ofLook_;
    std::unique_ptr<TrialLook> look_;
    std::unique_ptr<MainThread::Timer> next_;
    WeakSelf<TryOut> weakSelf_{this};
};

}  // namespace marrowby
