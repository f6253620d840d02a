// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/Story.h"

#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Engine/UnlockFailure.h"
#include "UnlockCore/Engine/UnlockMachine.h"
#include "UnlockCore/Enrollment/EnrollmentPose.h"
#include "UnlockCore/LockWatching/UnlockTrigger.h"

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
using Log = std::vector<ProgramJournal::Entry>;
using unlockmachine::LookReason;

constexpr std::string_view changedPassword = "staple No. 4711";

constexpr TimeInterval shortly{5};
constexpr TimeInterval aScan{15};
constexpr TimeInterval passwordCheck{8};
constexpr TimeInterval anEnrolment{240};

constexpr std::size_t stranger = 0;
constexpr std::size_t otherStranger = 1;

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
/// The application ignores wakes and keys this long after a lock or a wake.
constexpr TimeInterval quietWindow{2};
/// Longer than it takes Space for its own; a key counts after so long without any.
constexpr TimeInterval quiet{1.1};
constexpr TimeInterval asleep{0.3};

/// Presses a button of the window, and waits for the page that follows.
Step pressTo(Stage& stage, std::string_view button, std::string_view next) {
    return Steps()
        .then([&] { return stage.press(button); })
        .then([&] { return stage.waitForPage(next, shortly); })
        .result();
}

/// Opens the settings window, changes it and closes it.
Step inSettings(Stage& stage, const std::function<Step()>& work) {
    return Steps()
        .then([&] { return stage.openApplication(); })
        .then(work)
        .then([&] { return stage.closeWindow(); })
        .result();
}

Step lockScreen(Stage& stage) {
    stage.takeLog();
    return Steps()
        .then([&] { return stage.lockScreen(); })
        .then([&] { return stage.waitForEvent(logevent::locked, shortly); })
        .result();
}

/// The displays sleep, and somebody wakes them.
Step sleepAndWake(Stage& stage) {
    stage.sleepDisplays();
    if (auto passed = stage.letPass(asleep); !passed) return passed;
    return stage.wakeDisplays();
}

Step comeBack(Stage& stage) {
    if (auto woken = sleepAndWake(stage); !woken) return woken;
    return stage.waitForEvent(logevent::looking, shortly, name(LookReason::wake).english());
}

bool has(const Log& log, std::string_view event) {
    return std::ranges::find(log, event, &ProgramJournal::Entry::event) != log.end();
}

/// Nothing was typed and the locker is still up.
Step stayedLocked(Stage& stage, const Log& log) {
    return Steps()
        .then([&] {
            return check(!has(log, logevent::typed),
                         "The password was typed though it should not have been.");
        })
        .then([&] { return check(stage.isLockerRunning(), "The locker has ended."); })
        .result();
}

Step unlockByHand(Stage& stage) {
    return Steps()
        .then([&] { return stage.typeByHand(stage.loginPassword()); })
        .then([&] { return stage.waitForUnlock(passwordCheck); })
        .result();
}

std::string milliseconds(TimeInterval interval) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(0) << interval.count() * 1000 << " ms";
    return text.str();
}

/// Until the password was typed, the locker has ended and the program has noticed. It logs `typed`
/// and `unlocked` only where the screen is still locked when it learns that typing has ended.
Step getsIn(Stage& stage) {
    return Steps()
        .then([&] { return stage.waitForEvent(logevent::road, aScan); })
        .then([&] { return stage.waitForUnlock(passwordCheck); })
        .then([&] {
            return has(stage.log(), logevent::typed)
                       ? stage.waitForEvent(logevent::unlocked, passwordCheck)
                       : Step{};
        })
        .result();
}

/// From the owner's return and `act`, which starts a scan, to the unlocked screen.
Step ownerReturns(Stage& stage, std::string_view scene, LookReason reason,
                  const std::function<Step()>& act) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return stage.putInFront(scene, owner); })
        .then(act)
        .then(
            [&] { return stage.waitForEvent(logevent::looking, shortly, name(reason).english()); })
        .then([&] { return stage.waitForEvent(logevent::recognised, aScan); })
        .then([&] { stage.photograph("Recognised (" + std::string(name(reason).english()) + ")"); })
        .then([&] { return getsIn(stage); })
        .result();
}

Ending ownerWakesTheScreen(Stage& stage) {
    const Step unlocked = ownerReturns(stage, "live-normal", LookReason::wake, [&] {
        return Steps()
            .then([&] { return sleepAndWake(stage); })
            .then([&] { return stage.letPass(TimeInterval(0.6)); })
            .then([&] { stage.photograph("The displays wake: looking"); })
            .result();
    });
    if (!unlocked) return std::unexpected(unlocked.error());
    const auto times = stage.unlockTimes();
    if (!times) return std::unexpected("The time of the unlock is not known.");
    return "unlocked: Return " + milliseconds(times->fromWake) + " after the wake, " +
           milliseconds(times->fromFirstPicture) + " after the camera’s first picture";
}

Ending ownerTouchesAKey(Stage& stage) {
    return Steps()
        .then([&] {
            return ownerReturns(stage, "live-one-sided", LookReason::activity, [&] {
                return Steps()
                    .then([&] { return stage.moveClock(quietWindow); })
                    .then([&] { return stage.letPass(quiet); })
                    .then([&] { return stage.touchKeyboard(); })
                    .result();
            });
        })
        .end("unlocked");
}

Ending setUp(Stage& stage) {
    return Steps()
        .then([&] { return stage.setLoginPassword(firstPassword); })
        .then([&] { return stage.seatUser(owner); })
        .then([&] { return stage.openApplication(); })
        .then([&] { return pressTo(stage, "Continue", "What it keeps, and how safe it is"); })
        .then([&] { return stage.press("I understand"); })
        .then([&] { return pressTo(stage, "Continue", "Allow the camera"); })
        .then([&] { return pressTo(stage, "Continue", "Allow typing your password"); })
        .then([&] { return pressTo(stage, "Continue", "Save your face"); })
        .then([&] {
            return stage.waitUntil("a turned head", anEnrolment, [&] {
                return stage.shows(prompt(EnrollmentPose::topRight).english()) ||
                       stage.page() == "Name this look";
            });
        })
        .then([&] { stage.photograph("Set-up: nine poses"); })
        .then([&] { return stage.waitForPage("Name this look", anEnrolment); })
        .then([&] { return stage.write("Owner"); })
        .then([&] { return pressTo(stage, "Continue", "Save your login password"); })
        .then([&] { return stage.write(stage.loginPassword()); })
        .then([&] { return pressTo(stage, "Continue", "When should it look for you?"); })
        .then([&] { return pressTo(stage, "Continue", "That’s it"); })
        .then([&] { return stage.press("Done"); })
        .then([&] { return stage.waitForNoWindow(); })
        .then([&] {
            return inSettings(stage, [&] {
                return stage.waitUntil("that no locker was seen", shortly, [&] {
                    return stage.shows("No screen locker has been seen yet");
                });
            });
        })
        .end("led through the welcome window: the face from nine poses, and the password");
}

/// From now on `wanted` starts a scan and `former` does not.
Step lookOnlyOn(Stage& stage, UnlockTrigger wanted, UnlockTrigger former) {
    return inSettings(stage, [&] {
        return Steps()
            .then([&] { return stage.press(title(wanted).english()); })
            .then([&] { return stage.press(title(former).english()); })
            .result();
    });
}

/// Moves the choice between standard and strict.
Step chooseProof(Stage& stage, int step) {
    return inSettings(stage,
                      [&] { return stage.choose("Proof that it’s you, and not a picture", step); });
}

/// The owner returns with another trigger than the default.
Ending returnsWith(Stage& stage, UnlockTrigger trigger, const std::function<Step()>& returns,
                   std::string ending) {
    return Steps()
        .then([&] { return lookOnlyOn(stage, trigger, UnlockTrigger::onReturn); })
        .then(returns)
        .then([&] { return lookOnlyOn(stage, UnlockTrigger::onReturn, trigger); })
        .end(std::move(ending));
}

Ending ownerPressesSpace(Stage& stage) {
    return returnsWith(
        stage, UnlockTrigger::onSpace,
        [&] {
            return ownerReturns(stage, "live-dark", LookReason::space, [&] {
                return Steps()
                    .then([&] { return stage.letPass(quiet); })
                    .then([&] { return stage.pressSpace(); })
                    .result();
            });
        },
        "unlocked, in weak light");
}

Ending ownerPointsAtTheIsland(Stage& stage) {
    // Moving the pointer there then starts no scan.
    return returnsWith(
        stage, UnlockTrigger::onSpace,
        [&] {
            return ownerReturns(stage, "live-backlit", LookReason::hover,
                                [&] { return stage.pointAtIsland(); });
        },
        "unlocked, with the light behind");
}

/// Repeats the turn if it was not recognised.
Step turnHeadUntilRecognised(Stage& stage) {
    constexpr int mostTurns = 4;
    constexpr TimeInterval aTurn{2};
    Step recognised;
    for (int turn = 0; turn < mostTurns; ++turn) {
        if (auto turned = stage.turnUsersHead(); !turned) return turned;
        recognised = stage.waitForEvent(logevent::recognised, aTurn);
        if (recognised) break;
    }
    return recognised;
}

Ending strictModeAsksForATurn(Stage& stage) {
    return Steps()
        .then([&] { return chooseProof(stage, 1); })
        .then([&] { return lockScreen(stage); })
        .then([&] { return stage.seatUser(owner); })
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForEvent(logevent::asked, aScan); })
        // For the island to grow.
        .then([&] { return stage.letPass(TimeInterval(0.5)); })
        .then([&] {
            stage.photograph("Strict: it asks for a turn of the head");
            return stayedLocked(stage, stage.takeLog());
        })
        .then([&] { return turnHeadUntilRecognised(stage); })
        .then([&] { stage.photograph("Recognised (strict)"); })
        .then([&] { return getsIn(stage); })
        .then([&] { return chooseProof(stage, -1); })
        .end("waited for the turn, then unlocked");
}

/// The cue that ended a scan; empty where none did.
std::string denial(const Log& log) {
    const auto found = std::ranges::find(log, logevent::turnedAway, &ProgramJournal::Entry::event);
    return found == log.end() ? std::string() : found->subject;
}

/// Several scans at one lock; each must leave the screen locked.
struct Visitor {
    const char* scene;
    std::size_t person;
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
                   // The application ignores a wake right after another.
                   .then([&] { return isFirst ? Step() : stage.moveClock(quietWindow); })
                   .then([&] { return stage.putInFront(visitor.scene, visitor.person); })
                   .then([&] { return comeBack(stage); })
                   .then([&] {
                       return stage.waitForEvent(logevent::failed, aScan,
                                                 title(UnlockFailure::NotRecognised{}).english());
                   })
                   .then([&] { return stage.letPass(TimeInterval(0.5)); })
                   .then([&] { stage.photograph(visitor.caption); })
                   .then([&] {
                       const auto log = stage.takeLog();
                       told += (told.empty() ? "" : "; ") + tells(visitor, denial(log));
                       return stayedLocked(stage, log);
                   })
                   .result();
    }
    return Steps().then([&] { return gone; }).then([&] { return unlockByHand(stage); }).end(told);
}

Ending strangersCome(Stage& stage) {
    return noneGetsIn(stage,
                      {{"live-normal", stranger, "A stranger"},
                       {"live-turning", otherStranger, "Another stranger"}},
                      [](const Visitor& /*visitor*/, const std::string& denial) {
                          return denial.empty() ? "not recognised" : denial;
                      });
}

/// One of everything that can be held up.
Ending ownersFaceIsHeldUp(Stage& stage) {
    return noneGetsIn(stage,
                      {{"print-flat", owner, "A photo on paper"},
                       {"print-bent", owner, "A bent photo"},
                       {"cut-out-turned", owner, "A cut-out mask"},
                       {"phone-photo", owner, "A photo on a phone"},
                       {"phone-turned-replay", owner, "A video on a phone"},
                       {"tablet-replay", owner, "A video on a tablet"},
                       {"monitor-photo", owner, "A photo on a monitor"},
                       {"monitor-near-replay", owner, "A video on a monitor"}},
                      [](const Visitor& visitor, const std::string& denial) {
                          return std::string(visitor.caption) + ": " +
                                 (denial.empty() ? "not confirmed" : denial);
                      });
}

Step typeWrongPassword(Stage& stage, std::size_t time, std::string_view verdict) {
    return Steps()
        .then([&] { return comeBack(stage); })
        .then([&] { return stage.waitForEvent(logevent::typed, aScan); })
        .then([&] { return stage.waitForRefusals(time, passwordCheck); })
        // For so long the locker may still let the owner in.
        .then([&] { return stage.moveClock(UnlockMachine::passwordCheckDelay); })
        .then([&] { return stage.waitForEvent(verdict, passwordCheck); })
        .then([&] {
            return stage.waitForEvent(logevent::failed, shortly,
                                      title(UnlockFailure::PasswordRejected{}).english());
        })
        .then([&] { return check(stage.isLockerRunning(), "The locker has ended."); })
        .result();
}

Ending passwordIsOutOfDate(Stage& stage) {
    return Steps()
        .then([&] { return stage.setLoginPassword(changedPassword); })
        .then([&] { return lockScreen(stage); })
        .then([&] { return stage.putInFront("live-normal", owner); })
        .then([&] { return typeWrongPassword(stage, 1, logevent::passwordTurnedDown); })
        .then([&] { return typeWrongPassword(stage, 2, logevent::typingSuspended); })
        .then([&] { return stage.letPass(TimeInterval(0.5)); })
        .then([&] { stage.photograph("Turned down twice: typing stops"); })
        .then([&] { return unlockByHand(stage); })
        .then([&] { return stage.waitForPage("Update your login password", shortly); })
        .then([&] { return stage.write(stage.loginPassword()); })
        .then([&] { return stage.press("Save"); })
        .then([&] { return stage.waitForNoWindow(); })
        .end("turned down twice, typing suspended; the owner was asked for the new password");
}

/// Without the key no scan starts; the owner confirms once and comes back.
Step ownerConfirms(Stage& stage, std::string_view caption) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return stage.putInFront("live-normal", owner); })
        .then([&] { return sleepAndWake(stage); })
        .then([&] { return stage.letPass(TimeInterval(1)); })
        .then([&] {
            stage.photograph(std::string(caption));
            return check(!has(stage.takeLog(), logevent::looking), "It looked without the key.");
        })
        .then([&] { return stayedLocked(stage, {}); })
        .then([&] { return unlockByHand(stage); })
        .then([&] { return confirmOwner(stage); })
        .then([&] {
            return ownerReturns(stage, "live-normal", LookReason::wake,
                                [&] { return sleepAndWake(stage); });
        })
        .result();
}

Ending weekPasses(Stage& stage) {
    return Steps()
        .then([&] { return stage.moveClock(aWeekAndADay); })
        .then([&] { return ownerConfirms(stage, "A week later: the key is forgotten"); })
        .end("the key was forgotten; the owner confirmed, then unlocked");
}

Ending computerRestarts(Stage& stage) {
    return Steps()
        .then([&] { return stage.restartApplication(); })
        .then([&] { return ownerConfirms(stage, "After a restart: no key yet"); })
        .end("no look before the owner confirmed once; then unlocked with what was saved");
}

Ending everythingIsErased(Stage& stage) {
    return Steps()
        .then([&] {
            return check(
                stage.isSaved("Faces.sealed") && stage.isSaved("Password.sealed") && stage.hasKey(),
                "Face, password and key aren’t saved.");
        })
        .then([&] { return stage.openApplication(); })
        .then([&] { return pressTo(stage, "Erase Everything…", "Erase everything?"); })
        .then([&] { return pressTo(stage, "Erase", "Marrowby Unlock"); })
        .then([&] {
            return check(!stage.isSaved("Faces.sealed") && !stage.isSaved("Password.sealed") &&
                             !stage.hasKey(),
                         "Something is still saved.");
        })
        .then([&] {
            return check(!stage.shows("Ready"), "It is ready though everything was erased.");
        })
        .end("face, password and key are gone");
}

}  // namespace

std::expected<void, std::string> confirmOwner(Stage& stage) {
    return inSettings(stage, [&] {
        return Steps()
            .then([&] { return stage.press(linuxWords.ownerCheck.button.english()); })
            .then([&] {
                return stage.waitUntil("what comes after it", shortly, [&] {
                    return stage.shows("Ready") ||
                           stage.shows("No screen locker has been seen yet");
                });
            })
            .result();
    });
}

std::expected<void, std::string> ownerUnlocks(Stage& stage) {
    return Steps()
        .then([&] { return lockScreen(stage); })
        .then([&] { return sleepAndWake(stage); })
        .then([&] { return getsIn(stage); })
        .result();
}

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
