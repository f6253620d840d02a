// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/ProgramJournal.h"
#include "Simulation/Rehearsal/ContactSheet.h"
#include "Simulation/Rehearsal/Transcript.h"
#include "UnlockCore/Foundation/Time.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// A private session with a real screen locker, and in it the program with scripted cameras. The
/// program is operated by keys, the pointer and assistive technology, and observed by its windows
/// and its journal. Main thread, under Qt's event loop. Errors are one sentence; destroying this
/// ends every process.
class Stage {
  public:
    template <typename T>
    using Result = std::expected<T, std::string>;

    struct Places {
        /// The folder of a pack.
        std::filesystem::path models;
        /// marrowby-unlock-on-stage.
        std::filesystem::path program;
        /// A user's saved data, as keepHome() left it; a new user's where it is empty.
        std::filesystem::path home{};
        PrivateScreen screen{};
        /// Of the cameras.
        int picturesPerSecond = 15;
        /// Of the program’s texts; English where it is empty.
        std::string language{};
    };

    [[nodiscard]] static Result<std::unique_ptr<Stage>> create(const Places& places);
    ~Stage();
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;

    [[nodiscard]] Transcript& transcript();

    /// The user starts the program again, which opens its window; returns when that is there.
    [[nodiscard]] Result<void> openApplication();
    [[nodiscard]] Result<void> closeWindow();
    /// Restarts the program on its saved data.
    [[nodiscard]] Result<void> restartApplication();
    /// The title of the window that is shown.
    [[nodiscard]] std::optional<std::string> page() const;
    [[nodiscard]] Result<void> waitForPage(std::string_view title, TimeInterval limit);
    [[nodiscard]] Result<void> waitForNoWindow();
    /// Presses a button or a switch of the window.
    [[nodiscard]] Result<void> press(std::string_view name);
    /// Gives the keyboard to the window's first text field and types into it.
    [[nodiscard]] Result<void> write(std::string_view text);
    /// Moves a choice of the window by that many options.
    [[nodiscard]] Result<void> choose(std::string_view name, int step);
    [[nodiscard]] bool shows(std::string_view text) const;
    /// A file that the program saves.
    [[nodiscard]] bool isSaved(std::string_view name) const;
    /// Whether the vault's key is in the session's keyring.
    [[nodiscard]] bool hasKey() const;
    /// Copies the user's saved data, the keyring too, to a new folder.
    [[nodiscard]] Result<void> keepHome(const std::filesystem::path& folder) const;

    /// Shows the camera a scene of the catalogue with one of distinctPeople().
    [[nodiscard]] Result<void> putInFront(std::string_view scene, std::size_t person);
    /// The same with pictures drawn beforehand, for fast cameras; forwards and backwards.
    [[nodiscard]] Result<void> playReel(std::string_view scene, std::size_t person);
    /// Shows a person who follows the enrolment's guide.
    [[nodiscard]] Result<void> seatUser(std::size_t person);
    /// The seated person turns the head to one side and back.
    [[nodiscard]] Result<void> turnUsersHead();
    /// Sets the account's password.
    [[nodiscard]] Result<void> setLoginPassword(std::string_view password);
    [[nodiscard]] const std::string& loginPassword() const;
    /// Starts the locker, which asks the login password.
    [[nodiscard]] Result<void> lockScreen();
    /// Until the locker has ended.
    [[nodiscard]] Result<void> waitForUnlock(TimeInterval limit);
    /// Until the locker has turned down that many passwords since it locked.
    [[nodiscard]] Result<void> waitForRefusals(std::size_t count, TimeInterval limit);
    void sleepDisplays();
    /// Wakes them with a key.
    [[nodiscard]] Result<void> wakeDisplays();
    /// Presses a key that types nothing.
    [[nodiscard]] Result<void> touchKeyboard();
    [[nodiscard]] Result<void> pressSpace();
    /// Moves the pointer to the island from elsewhere.
    [[nodiscard]] Result<void> pointAtIsland();
    /// Sets the program's clock and timers forward, by whole seconds.
    [[nodiscard]] Result<void> moveClock(TimeInterval by);
    /// Types at the lock screen and presses Return.
    [[nodiscard]] Result<void> typeByHand(std::string_view text);
    /// Ends the locker by force; for tidying up after an act.
    void killLocker();
    [[nodiscard]] bool isLockerRunning() const;

    /// Runs the main loop until `holds`. Fails after `limit`, at an interruption (SIGINT, SIGTERM)
    /// and when the program has ended.
    [[nodiscard]] Result<void> waitUntil(std::string_view what, TimeInterval limit,
                                         const std::function<bool()>& holds);
    /// Runs the main loop for a while.
    [[nodiscard]] Result<void> letPass(TimeInterval time);
    /// Waits for an event (of logevent) in the journal, after those already waited for, and about
    /// `subject` unless that is empty.
    [[nodiscard]] Result<void> waitForEvent(std::string_view event, TimeInterval limit,
                                            std::string_view subject = {});
    /// The program's window, once its picture has not changed for a while.
    [[nodiscard]] Result<QImage> windowPicture();
    /// Adds this moment to the contact sheet.
    void photograph(std::string caption);
    [[nodiscard]] const ContactSheet& contactSheet() const;
    /// Entries of the journal since takeLog().
    [[nodiscard]] const std::vector<ProgramJournal::Entry>& log() const;
    /// Entries of the journal since the last call of this.
    std::vector<ProgramJournal::Entry> takeLog();

    /// From the last wake, and from the first picture after it, to the end of typing; nothing
    /// before.
    struct UnlockTimes {
        TimeInterval fromWake{};
        TimeInterval fromFirstPicture{};
    };
    [[nodiscard]] std::optional<UnlockTimes> unlockTimes() const;

  private:
    struct Parts;

    explicit Stage(std::unique_ptr<Parts> parts);
    [[nodiscard]] Result<void> order(const std::string& line);
    [[nodiscard]] Result<void> tap(std::uint32_t keysym);

    std::unique_ptr<Parts> parts_;
};

}  // namespace marrowby
