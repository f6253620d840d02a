// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/OnStage/MovedMainThread.h"
#include "Simulation/OnStage/SceneServices.h"
#include "Simulation/Scenes/Cast.h"
#include "Simulation/Scenes/Scene.h"
#include "Simulation/Scenes/SceneUser.h"
#include "Simulation/Scenes/ScriptedCamera.h"
#include "Unlock/Linux/PlatformFactory.h"
#include "UnlockCore/Foundation/Mutex.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

class QSocketNotifier;
class QTimer;

namespace marrowby {

/// The program's platform in a rehearsal: cameras that film made-up people, a made-up login
/// password, an owner who confirms or cancels, and a clock that can be set forward. Everything
/// else, the keyring too, is the program's own.
///
/// Reads commands from the standard input, one a line, and answers “done: VERB”: “seat N” (the Nth
/// person, who follows the ring of the window), “turn” (that person’s head), “scene NAME N”,
/// “reel NAME N” (the same, drawn before the answer), “nobody”, “password TEXT”, “owner yes”,
/// “owner no”, “clock SECONDS” (forward) and “picture FILE” (the cameras’ newest, as PNG). Writes
/// to the standard output what a window shows first (“page: TITLE”), the state it tells first
/// (“status: TEXT”), what has the focus, and when a camera that was started gives its first
/// picture. The cameras give MARROWBY_CAMERA_RATE pictures a second, else 15.
class StagePlatformFactory final : public PlatformFactory {
  public:
    /// `models`: the folder of the model pack.
    explicit StagePlatformFactory(std::filesystem::path models);
    ~StagePlatformFactory() override;

    [[nodiscard]] std::expected<ModelPack, std::string> models(
        std::span<const std::filesystem::path> folders) override;
    [[nodiscard]] std::unique_ptr<SystemClock> makeClock() override;
    [[nodiscard]] std::unique_ptr<MainThread> makeMainThread() override;
    [[nodiscard]] std::string journalSocket() override;
    [[nodiscard]] std::shared_ptr<CaptureSession> makeCamera(const SystemClock& clock) override;
    [[nodiscard]] std::shared_ptr<MacPasswordVerifying> makePasswordVerifier(
        const std::string& userName) override;
    [[nodiscard]] std::unique_ptr<OwnerCheck> makeOwnerCheck(MainThread& mainThread) override;
    void didLaunch(UnlockApplication& application) override;

  private:
    void readOrders();
    void follow(const std::string& order);
    void film(const Scene& scene);
    void playReel(const Scene& scene);
    /// One view for each camera.
    void show(const std::function<ScriptedCamera::View()>& makeView);
    void seat(std::uint64_t person);
    /// New output since the last call.
    void observe();
    [[nodiscard]] bool savePicture(const std::string& file) const;
    /// Any thread.
    static void say(const std::string& line);

    const std::filesystem::path models_;
    /// The program's own; null before it asks for them.
    MovedClock* clock_ = nullptr;
    MovedMainThread* mainThread_ = nullptr;
    const std::shared_ptr<SceneAccount> account_ = std::make_shared<SceneAccount>();
    const std::shared_ptr<bool> ownerConfirms_ = std::make_shared<bool>(true);
    Cast cast_;
    std::vector<std::shared_ptr<ScriptedCamera>> cameras_;
    std::shared_ptr<SceneUser> user_;
    mutable Mutex pictureMutex_;
    std::shared_ptr<const PixelBuffer> picture_ GUARDED_BY(pictureMutex_);
    Date sceneBegan_;

    std::unique_ptr<QSocketNotifier> input_;
    std::string unread_;
    std::unique_ptr<QTimer> observing_;
    std::string page_;
    std::string status_;
    std::string focus_;
};

}  // namespace marrowby
