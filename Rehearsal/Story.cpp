#include "Rehearsal/Story.h"

#include "Rehearsal/People/Person.h"
#include "Rehearsal/Scenes/SceneCatalogue.h"
#include "UnlockCore/Foundation/SecretBytes.h"

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>

namespace marrowby {

namespace {

using Ending = std::expected<std::string, std::string>;
using Step = std::expected<void, std::string>;

constexpr std::string_view loginPassword = "Corr3ct-HoRse_b@ttery!";
constexpr std::string_view changedPassword = "staple No. 4711";

constexpr TimeInterval shortly{5};
constexpr TimeInterval aLook{15};
constexpr TimeInterval passwordCheck{8};

std::uint64_t owner() {
    return distinctPeople()[0];
}
std::uint64_t stranger() {
    return distinctPeople()[1];
}

/// Takes steps until one fails.
class Steps {
  public:
    template <std::invocable Work>
    Steps& then(Work&& work) {
        if (!fault_) {
            if (const Step step = work(); !step) fault_ = step.error();
        }
        return *this;
    }
    [[nodiscard]] Step result() const {
        if (fault_) return std::unexpected(*fault_);
        return {};
    }
    /// How the act ended when no step failed.
    [[nodiscard]] Ending end(std::string ending) const {
        if (fault_) return std::unexpected(*fault_);
        return ending;
    }

  private:
    std::optional<std::string> fault_;
};

Step check(bool holds, std::string_view sentence) {
    if (holds) return {};
    return std::unexpected(std::string(sentence));
}

/// Puts a scene of the catalogue in front of the camera.
Step show(Stage& stage, std::string_view scene, std::uint64_t person) {
    const auto found = sceneNamed(scene, person);
    if (!found) return std::unexpected("There is no scene “" + std::string(scene) + "”.");
    stage.putInFront(*found);
    return {};
}

/// Does something in the window in front, and waits for the page that follows.
Step onPage(Stage& stage, std::string_view next, const std::function<bool(SceneWindows&)>& work,
            TimeInterval limit = shortly) {
    SceneWindows& windows = stage.windows();
    const std::string title = windows.page().title;
    if (!work(windows)) return std::unexpected("The page “" + title + "” lacks a control.");
    return stage.waitUntil(
        "the page “" + std::string(next) + "” after “" + title + "”", limit,
        [&] { return windows.isOpen(windows.front()) && windows.page().title == next; });
}

bool pressContinue(SceneWindows& windows) {
    return windows.press("Continue");
}

/// Until the window in front has closed.
Step windowCloses(Stage& stage) {
    SceneWindows& windows = stage.windows();
    return stage.waitUntil("the window to close", shortly,
                           [&] { return !windows.isOpen(windows.front()); });
}

Step lockScreen(Stage& stage) {
    stage.takeLog();
    return Steps()
        .then([&] { return stage.lockScreen(); })
        .then([&] { return stage.waitForLog("Locked: waiting for you to come back", shortly); })
        .result();
}

/// The displays sleep, and somebody wakes them.
Step comeBack(Stage& stage) {
    stage.sleepDisplays();
    if (auto passed = stage.letPass(TimeInterval(0.5)); !passed) return passed;
    stage.wakeDisplays();
    return stage.waitForLog("Looking (wake)", shortly);
}

/// Nobody was let in: nothing was typed, and the locker still asks.
Step stayedLocked(Stage& stage) {
    const auto log = stage.takeLog();
    return Steps()
        .then([&] {
            return check(std::ranges::none_of(
                             log, [](const auto& line) { return line.starts_with("Typed"); }),
                         "The password was typed though it should not have been.");
        })
        .then([&] { return check(stage.isLockerRunning(), "The locker has ended."); })
        .result();
}

Step unlockByHand(Stage& stage, std::string_view password) {
    return Steps()
        .then([&] { return stage.typeByHand(password); })
        .then([&] { return stage.waitForUnlock(passwordCheck); })
        .result();
}

std::string milliseconds(TimeInterval interval) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(0) << interval.count() * 1000 << " ms";
    return text.str();
}

Ending setUp(Stage& stage) {
    return Steps()
        .then([&] {
            stage.setLoginPassword(loginPassword);
            stage.seatUser(owner());
            return stage.openApplication();
        })
        .then([&] { return onPage(stage, "What it keeps, and how safe it is", pressContinue); })
        .then([&] {
            return onPage(stage, "Allow the camera", [](SceneWindows& windows) {
                return windows.toggle("I understand", true) && windows.press("Continue");
            });
        })
        .then([&] { return onPage(stage, "Allow typing your password", pressContinue); })
        .then([&] { return onPage(stage, "Save your face", pressContinue); })
        .then([&] {
            return stage.waitUntil("the enrolment", TimeInterval(240), [&] {
                return stage.windows().page().title == "Name this look";
            });
        })
        .then([&] {
            return onPage(stage, "Save your Mac password", [](SceneWindows& windows) {
                return windows.write("Owner") && windows.press("Continue");
            });
        })
        .then([&] {
            return onPage(stage, "When should it look for you?", [](SceneWindows& windows) {
                return windows.typeSecret(loginPassword) && windows.press("Continue");
            });
        })
        .then([&] { return onPage(stage, "That’s it", pressContinue); })
        .then(
            [&] { return check(stage.windows().press("Done"), "The welcome window has no end."); })
        .then([&] { return windowCloses(stage); })
        .then([&] {
            UnlockSettings settings = stage.model().settings();
            // Patient also with a slow machine.
            settings.scanSeconds = 10;
            stage.model().apply(settings);
            return check(stage.model().status().isReady(), "The application isn’t ready.");
        })
        .end("led through the welcome window: the face from nine poses, and the password");
}

Ending ownerComesBack(Stage& stage) {
    const Step unlocked =
        Steps()
            .then([&] { return lockScreen(stage); })
            .then([&] { return show(stage, "live-normal", owner()); })
            .then([&] { return comeBack(stage); })
            .then([&] { return stage.waitForLog("Recognised", aLook); })
            .then([&] { return stage.waitForLog("Typed the password and Return", aLook); })
            .then([&] { return stage.waitForLog("Unlocked", passwordCheck); })
            .then([&] { return stage.waitForUnlock(shortly); })
            .result();
    if (!unlocked) return std::unexpected(unlocked.error());
    const auto times = stage.roadTimes();
    if (!times) return std::unexpected("The time of the unlock is not known.");
    return "unlocked: Return " + milliseconds(times->fromWake) + " after the wake, " +
           milliseconds(times->fromFirstFrame) + " after the camera’s first frame";
}

Ending strangerComes(Stage& stage) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return show(stage, "live-normal", stranger()); })
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForLog("Not recognised", aLook); })
        .then([&] { return stayedLocked(stage); })
        .then([&] { return unlockByHand(stage, loginPassword); })
        .end("not recognised, the screen stayed locked");
}

Ending photoIsHeldUp(Stage& stage) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return show(stage, "phone-turned-photo", owner()); })
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForLog("Turned away: ", aLook); })
        .then([&] { return stage.waitForLog("Not recognised", shortly); })
        .then([&] { return stayedLocked(stage); })
        .then([&] { return unlockByHand(stage, loginPassword); })
        .end("turned away, the screen stayed locked");
}

Step typeWrongPassword(Stage& stage, std::string_view verdict) {
    return Steps()
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForLog("Typed the password and Return", aLook); })
        .then([&] { return stage.waitForLog(verdict, passwordCheck); })
        .then([&] { return stage.waitForLog("Password not accepted", shortly); })
        .then([&] { return check(stage.isLockerRunning(), "The locker has ended."); })
        .result();
}

Ending passwordIsOutOfDate(Stage& stage) {
    return Steps()
        .then([&] {
            stage.setLoginPassword(changedPassword);
            return lockScreen(stage);
        })
        .then([&] { return show(stage, "live-normal", owner()); })
        .then([&] { return typeWrongPassword(stage, "Password turned down"); })
        .then([&] {
            return typeWrongPassword(stage,
                                     "Password turned down twice: typing stops until it’s updated");
        })
        .then([&] {
            return check(stage.model().settings().passwordHealth.suspended,
                         "Typing was not suspended.");
        })
        .then([&] { return unlockByHand(stage, changedPassword); })
        .then([&] {
            return stage.waitUntil("the request to update the password", shortly, [&] {
                return stage.windows().isOpen(UnlockOpening::Window::welcome);
            });
        })
        .then([&] {
            const bool saved =
                stage.windows().typeSecret(changedPassword) && stage.windows().press("Save");
            return check(saved, "The window doesn’t ask for the password.");
        })
        .then([&] { return windowCloses(stage); })
        .then([&] {
            return check(!stage.model().settings().passwordHealth.suspended,
                         "Typing is still suspended.");
        })
        .end("turned down twice, typing suspended; the owner was asked for the new password");
}

Ending computerRestarts(Stage& stage) {
    return Steps()
        .then([&] {
            stage.restartApplication();
            return check(!stage.model().state().vaultUnlocked, "The key outlived the restart.");
        })
        .then([&] { return lockScreen(stage); })
        .then([&] { return show(stage, "live-normal", owner()); })
        .then([&] {
            stage.sleepDisplays();
            return stage.letPass(TimeInterval(0.5));
        })
        .then([&] {
            stage.wakeDisplays();
            return stage.letPass(TimeInterval(2));
        })
        .then([&] { return stayedLocked(stage); })
        .then([&] { return unlockByHand(stage, changedPassword); })
        .then([&] { return stage.openApplication(); })
        .then([&] {
            return check(stage.windows().press("Use Touch ID…"), "The owner isn’t asked for.");
        })
        .then([&] {
            return stage.waitUntil("the owner’s confirmation", shortly,
                                   [&] { return stage.model().status().isReady(); });
        })
        .then([&] {
            stage.windows().closeByUser();
            return lockScreen(stage);
        })
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForLog("Unlocked", aLook); })
        .then([&] { return stage.waitForUnlock(shortly); })
        .end("no look before the owner confirmed once; then unlocked with what was saved");
}

Ending everythingIsErased(Stage& stage) {
    return Steps()
        .then([&] { return stage.openApplication(); })
        .then([&] {
            return onPage(stage, "Erase everything?",
                          [](SceneWindows& windows) { return windows.press("Erase Everything…"); });
        })
        .then([&] {
            return onPage(stage, "Marrowby Unlock",
                          [](SceneWindows& windows) { return windows.press("Erase"); });
        })
        .then([&] {
            const UnlockModel::State& state = stage.model().state();
            return check(
                !state.isEnrolled && !state.hasPassword && !state.vaultUnlocked && !state.problem,
                "Something is still saved.");
        })
        .end("face, password and key are gone");
}

}  // namespace

std::vector<Act> acts() {
    return {{"The owner sets it up", setUp},
            {"The owner comes back", ownerComesBack},
            {"A stranger comes", strangerComes},
            {"Somebody holds up the owner’s photo on a phone", photoIsHeldUp},
            {"The login password was changed elsewhere", passwordIsOutOfDate},
            {"The computer restarts", computerRestarts},
            {"The owner erases everything", everythingIsErased}};
}

}  // namespace marrowby
