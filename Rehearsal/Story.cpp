#include "Rehearsal/Story.h"

#include "Rehearsal/People/Person.h"
#include "Rehearsal/Scenes/SceneCatalogue.h"
#include "Unlock/Linux/LinuxWords.h"
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
#include <type_traits>
#include <vector>

namespace marrowby {

namespace {

using Ending = std::expected<std::string, std::string>;
using Step = std::expected<void, std::string>;

constexpr std::string_view loginPassword = "Corr3ct-HoRse_b@ttery!";
constexpr std::string_view changedPassword = "staple No. 4711";

constexpr TimeInterval shortly{5};
constexpr TimeInterval aLook{15};
constexpr TimeInterval passwordCheck{8};
constexpr TimeInterval anEnrolment{240};

std::uint64_t stranger(std::size_t number) {
    return distinctPeople()[number];
}
/// Of all, somebody of a quite usual face: others are longer in finding the poses.
std::uint64_t owner() {
    return distinctPeople()[4];
}

/// Takes steps until one fails.
class Steps {
  public:
    template <std::invocable Work>
    Steps& then(Work&& work) {
        if (fault_) return *this;
        if constexpr (std::is_void_v<std::invoke_result_t<Work>>) {
            work();
        } else if (const Step step = work(); !step) {
            fault_ = step.error();
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

constexpr TimeInterval aWeekAndADay{8 * 86400.0};
/// After it a wake counts again, and a key touched after a lock; a Space after our own keys sooner.
constexpr TimeInterval quietWindow{2.1};
constexpr TimeInterval afterTyping{1.1};
constexpr TimeInterval asleep{0.3};

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
Step sleepAndWake(Stage& stage) {
    stage.sleepDisplays();
    if (auto passed = stage.letPass(asleep); !passed) return passed;
    stage.wakeDisplays();
    return {};
}

Step comeBack(Stage& stage) {
    if (auto woken = sleepAndWake(stage); !woken) return woken;
    return stage.waitForLog("Looking (wake)", shortly);
}

/// Nobody was let in: nothing was typed, and the locker still asks.
Step stayedLocked(Stage& stage, const std::vector<std::string>& log) {
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

/// Changes what the user has set.
void set(Stage& stage, const std::function<void(UnlockSettings&)>& change) {
    UnlockSettings settings = stage.model().settings();
    change(settings);
    stage.model().apply(settings);
}

/// From being recognised on.
Step getsIn(Stage& stage, std::string caption) {
    return Steps()
        // The island takes its time to say so.
        .then([&] { return stage.letPass(TimeInterval(0.35)); })
        .then([&] { stage.photograph(std::move(caption)); })
        .then([&] { return stage.waitForLog("Typed the password and Return", aLook); })
        .then([&] { return stage.waitForLog("Unlocked", passwordCheck); })
        .then([&] { return stage.waitForUnlock(shortly); })
        .result();
}

/// The owner is there and does something that makes it look, to the unlocked screen.
Step ownerReturns(Stage& stage, std::string_view scene, std::string_view reason,
                  const std::function<Step()>& act) {
    const std::string looking = "Looking (" + std::string(reason) + ")";
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return show(stage, scene, owner()); })
        .then(act)
        .then([&] { return stage.waitForLog(looking, shortly); })
        .then([&] { return stage.waitForLog("Recognised", aLook); })
        .then([&] { return getsIn(stage, "Recognised (" + std::string(reason) + ")"); })
        .result();
}

Ending ownerWakesTheScreen(Stage& stage) {
    const Step unlocked = ownerReturns(stage, "live-normal", "wake", [&] {
        return Steps()
            .then([&] { return sleepAndWake(stage); })
            .then([&] { return stage.letPass(TimeInterval(0.6)); })
            .then([&] { stage.photograph("The displays wake: looking"); })
            .result();
    });
    if (!unlocked) return std::unexpected(unlocked.error());
    const auto times = stage.roadTimes();
    if (!times) return std::unexpected("The time of the unlock is not known.");
    return "unlocked: Return " + milliseconds(times->fromWake) + " after the wake, " +
           milliseconds(times->fromFirstFrame) + " after the camera’s first frame";
}

Ending ownerTouchesAKey(Stage& stage) {
    return Steps()
        .then([&] {
            return ownerReturns(stage, "live-one-sided", "activity", [&] {
                return Steps()
                    .then([&] { return stage.letPass(quietWindow); })
                    .then([&] { return stage.touchKeyboard(); })
                    .result();
            });
        })
        .end("unlocked");
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
            return stage.waitUntil("a turned head", anEnrolment, [&] {
                const auto guide = stage.windows().row<WindowRow::Guide>();
                return guide && guide->hint == prompt(EnrollmentPose::topRight);
            });
        })
        .then([&] { stage.photograph("Set-up: nine poses"); })
        .then([&] {
            return stage.waitUntil("the enrolment", anEnrolment, [&] {
                return stage.windows().page().title == "Name this look";
            });
        })
        .then([&] {
            return onPage(stage, "Save your login password", [](SceneWindows& windows) {
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
            // Patient also with a slow machine.
            set(stage, [](UnlockSettings& settings) { settings.scanSeconds = 10; });
            return check(stage.model().status().isReady(), "The application isn’t ready.");
        })
        .end("led through the welcome window: the face from nine poses, and the password");
}

void lookOnlyOn(Stage& stage, UnlockTrigger trigger) {
    set(stage, [&](UnlockSettings& settings) { settings.triggers = UnlockTriggers{trigger}; });
}

void demand(Stage& stage, LivenessMode mode) {
    set(stage, [&](UnlockSettings& settings) { settings.livenessMode = mode; });
}

Ending ownerPressesSpace(Stage& stage) {
    return Steps()
        .then([&] { lookOnlyOn(stage, UnlockTrigger::onSpace); })
        .then([&] {
            return ownerReturns(stage, "live-dark", "space", [&] {
                return Steps()
                    .then([&] { return stage.letPass(afterTyping); })
                    .then([&] { return stage.pressSpace(); })
                    .result();
            });
        })
        .end("unlocked, in weak light");
}

Ending ownerPointsAtTheIsland(Stage& stage) {
    return Steps()
        .then([&] {
            return ownerReturns(stage, "live-backlit", "hover",
                                [&] { return stage.pointAtIsland(); });
        })
        .then([&] { lookOnlyOn(stage, UnlockTrigger::onReturn); })
        .end("unlocked, with the light behind");
}

/// Once, and again where that was not enough.
Step turnHeadUntilRecognised(Stage& stage) {
    constexpr int mostTurns = 4;
    constexpr TimeInterval aTurn{2};
    Step recognised;
    for (int turn = 0; turn < mostTurns; ++turn) {
        stage.turnUsersHead();
        recognised = stage.waitForLog("Recognised", aTurn);
        if (recognised) break;
    }
    return recognised;
}

Ending strictModeAsksForATurn(Stage& stage) {
    return Steps()
        .then([&] { demand(stage, LivenessMode::strict); })
        .then([&] { return lockScreen(stage); })
        .then([&] { stage.seatUser(owner()); })
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForLog("Asked: Turn your head", aLook); })
        // The island has grown to the size of the question.
        .then([&] { return stage.letPass(TimeInterval(0.5)); })
        .then([&] {
            stage.photograph("Strict: it asks for a turn of the head");
            return stayedLocked(stage, stage.takeLog());
        })
        .then([&] { return turnHeadUntilRecognised(stage); })
        .then([&] { return getsIn(stage, "Recognised (strict)"); })
        .then([&] { demand(stage, LivenessMode::standard); })
        .end("waited for the turn, then unlocked");
}

/// The cue that ended a look; empty where none did.
std::string denial(const std::vector<std::string>& log) {
    constexpr std::string_view beginning = "Turned away: ";
    for (const std::string& line : log)
        if (line.starts_with(beginning)) return line.substr(beginning.size());
    return {};
}

/// Several looks at one lock; each must end without the screen's being unlocked.
struct Visitor {
    const char* scene;
    std::uint64_t person;
    const char* caption;
};

Ending noneGetsIn(Stage& stage, const std::vector<Visitor>& visitors,
                  const std::function<std::string(const Visitor&, const std::string&)>& tells) {
    std::string told;
    Step gone = lockScreen(stage);
    for (const Visitor& visitor : visitors) {
        if (!gone) break;
        const bool isFirst = told.empty();
        gone = Steps()
                   // A wake right after another counts for none.
                   .then([&] {
                       return isFirst ? Step() : stage.letPassSinceWake(quietWindow - asleep);
                   })
                   .then([&] { return show(stage, visitor.scene, visitor.person); })
                   .then([&] { return comeBack(stage); })
                   .then([&] { return stage.waitForLog("Not recognised", aLook); })
                   .then([&] { return stage.letPass(TimeInterval(0.5)); })
                   .then([&] { stage.photograph(visitor.caption); })
                   .then([&] {
                       const auto log = stage.takeLog();
                       told += (told.empty() ? "" : "; ") + tells(visitor, denial(log));
                       return stayedLocked(stage, log);
                   })
                   .result();
    }
    return Steps()
        .then([&] { return gone; })
        .then([&] { return unlockByHand(stage, loginPassword); })
        .end(told);
}

Ending strangersCome(Stage& stage) {
    return noneGetsIn(stage,
                      {{"live-normal", stranger(0), "A stranger"},
                       {"live-turning", stranger(1), "Another stranger"}},
                      [](const Visitor& /*visitor*/, const std::string& denial) {
                          return denial.empty() ? "not recognised" : denial;
                      });
}

/// One of everything that can be held up.
Ending ownersFaceIsHeldUp(Stage& stage) {
    return noneGetsIn(stage,
                      {{"print-flat", owner(), "A photo on paper"},
                       {"print-bent", owner(), "A bent photo"},
                       {"cut-out-turned", owner(), "A cut-out mask"},
                       {"phone-photo", owner(), "A photo on a phone"},
                       {"phone-turned-replay", owner(), "A video on a phone"},
                       {"tablet-replay", owner(), "A video on a tablet"},
                       {"monitor-photo", owner(), "A photo on a monitor"},
                       {"monitor-near-replay", owner(), "A video on a monitor"}},
                      [](const Visitor& visitor, const std::string& denial) {
                          return std::string(visitor.caption) + ": " +
                                 (denial.empty() ? "not confirmed" : denial);
                      });
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
        .then([&] { return stage.letPass(TimeInterval(0.5)); })
        .then([&] { stage.photograph("Turned down twice: typing stops"); })
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

/// Without the key nothing is looked at; the owner confirms once, and comes back.
Step ownerConfirms(Stage& stage, std::string_view caption) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return show(stage, "live-normal", owner()); })
        .then([&] { return sleepAndWake(stage); })
        .then([&] { return stage.letPass(TimeInterval(1)); })
        .then([&] {
            stage.photograph(std::string(caption));
            const auto log = stage.takeLog();
            const bool hasLooked = std::ranges::any_of(
                log, [](const auto& line) { return line.starts_with("Looking"); });
            return check(!hasLooked, "It looked without the key.");
        })
        .then([&] { return stayedLocked(stage, {}); })
        .then([&] { return unlockByHand(stage, changedPassword); })
        .then([&] { return stage.openApplication(); })
        .then([&] {
            return check(stage.windows().press(linuxWords.ownerCheck.button),
                         "The owner isn’t asked for.");
        })
        .then([&] {
            return stage.waitUntil("the owner’s confirmation", shortly,
                                   [&] { return stage.model().status().isReady(); });
        })
        .then([&] { stage.windows().closeByUser(); })
        .then([&] {
            return ownerReturns(stage, "live-normal", "wake", [&] { return sleepAndWake(stage); });
        })
        .result();
}

Ending weekPasses(Stage& stage) {
    return Steps()
        .then([&] { stage.moveClock(aWeekAndADay); })
        .then([&] {
            return stage.waitUntil("the key to be forgotten", shortly,
                                   [&] { return !stage.model().state().vaultUnlocked; });
        })
        .then([&] { return ownerConfirms(stage, "A week later: the key is forgotten"); })
        .end("the key was forgotten; the owner confirmed, then unlocked");
}

Ending computerRestarts(Stage& stage) {
    return Steps()
        .then([&] {
            stage.restartApplication();
            return check(!stage.model().state().vaultUnlocked, "The key outlived the restart.");
        })
        .then([&] { return ownerConfirms(stage, "After a restart: no key yet"); })
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
            {"The owner wakes the displays", ownerWakesTheScreen},
            {"The owner touches a key", ownerTouchesAKey},
            {"The owner presses Space", ownerPressesSpace},
            {"The owner points at the island", ownerPointsAtTheIsland},
            {"Strict mode asks for a turn of the head", strictModeAsksForATurn},
            {"Strangers come", strangersCome},
            {"The owner’s face is held up", ownersFaceIsHeldUp},
            {"The login password was changed elsewhere", passwordIsOutOfDate},
            {"A week passes", weekPasses},
            {"The computer restarts", computerRestarts},
            {"The owner erases everything", everythingIsErased}};
}

}  // namespace marrowby
