#pragma once

#include "Rehearsal/ContactSheet.h"
#include "Rehearsal/SceneWindows.h"
#include "Rehearsal/Scenes/Scene.h"
#include "Rehearsal/Transcript.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/UnlockApplication.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// A whole computer for one rehearsal: a private screen with a real locker, a camera that films
/// scripted scenes, and the application wired to them as to any other. Main thread, under Qt's
/// event loop. Whatever fails does so with one sentence; when this is destroyed nothing of it is
/// left running.
class Stage {
  public:
    template <typename T>
    using Result = std::expected<T, std::string>;

    [[nodiscard]] static Result<std::unique_ptr<Stage>> create(const ModelPack& networks);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    [[nodiscard]] Transcript& transcript();
    [[nodiscard]] UnlockModel& model();
    [[nodiscard]] SceneWindows& windows();
    /// The user opens the application; returns when its window is there.
    [[nodiscard]] Result<void> openApplication();
    /// Ends the application and starts it anew, on what it saved.
    void restartApplication();

    /// What is in front of the camera from now on.
    void putInFront(const Scene& scene);
    /// Somebody who does what an enrolment asks for.
    void seatUser(std::uint64_t person);
    /// Who was seated turns the head to one side and back.
    void turnUsersHead();
    /// Which password the account has from now on.
    void setLoginPassword(std::string_view password);
    /// Starts the locker, which asks the login password.
    [[nodiscard]] Result<void> lockScreen();
    /// Until the locker has ended and that has been announced.
    [[nodiscard]] Result<void> waitForUnlock(TimeInterval limit);
    void sleepDisplays();
    void wakeDisplays();
    /// Somebody touches a key that types nothing.
    [[nodiscard]] Result<void> touchKeyboard();
    [[nodiscard]] Result<void> pressSpace();
    /// The pointer comes to the island from elsewhere.
    [[nodiscard]] Result<void> pointAtIsland();
    /// Sets the application's clock forward, and with it all that waits for a time.
    void moveClock(TimeInterval by);
    /// Somebody types at the lock screen and presses Return.
    [[nodiscard]] Result<void> typeByHand(std::string_view text);
    /// Ends the locker by force; for tidying up after an act.
    void killLocker();
    [[nodiscard]] bool isLockerRunning() const;

    /// Runs the main loop until `holds`. Fails after `limit`, at an interruption (SIGINT, SIGTERM)
    /// and when the display goes away.
    [[nodiscard]] Result<void> waitUntil(std::string_view what, TimeInterval limit,
                                         const std::function<bool()>& holds);
    /// Runs the main loop for a while.
    [[nodiscard]] Result<void> letPass(TimeInterval time);
    /// Until it is so long ago that the displays were last woken.
    [[nodiscard]] Result<void> letPassSinceWake(TimeInterval time);
    /// Waits for an engine line that begins with `text`, after those already waited for.
    [[nodiscard]] Result<void> waitForLog(std::string_view text, TimeInterval limit);
    /// Keeps this moment for the contact sheet.
    void photograph(std::string caption);
    [[nodiscard]] const ContactSheet& contactSheet() const;
    /// Engine lines since the last call of this.
    std::vector<std::string> takeLog();

    /// From the last wake, and from the first frame after it, to the end of typing; nothing before.
    struct RoadTimes {
        TimeInterval fromWake{};
        TimeInterval fromFirstFrame{};
    };
    [[nodiscard]] std::optional<RoadTimes> roadTimes() const;

  private:
    struct World;

    explicit Stage(std::unique_ptr<World> world);

    std::unique_ptr<World> world_;
};

}  // namespace marrowby
