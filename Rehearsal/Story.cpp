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

/// Waits for something that the model completes.
Step completed(Stage& stage, std::string_view what, TimeInterval limit,
               const std::function<void(UnlockModel::Completion)>& begin) {
    const auto result = std::make_shared<std::optional<Step>>();
    begin([result](const Step& outcome) { *result = outcome; });
    if (auto waited = stage.waitUntil(what, limit, [&result] { return result->has_value(); });
        !waited) {
        return waited;
    }
    return result->value_or(Step());
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

Ending enrolOwner(Stage& stage) {
    UnlockModel& model = stage.model();
    return Steps()
        .then([&] {
            stage.setLoginPassword(loginPassword);
            stage.seatUser(owner());
            return completed(stage, "the enrolment", TimeInterval(240),
                             [&](auto completion) { model.captureLook(std::move(completion)); });
        })
        .then([&] {
            return completed(stage, "the face to be saved", shortly, [&](auto completion) {
                model.saveCapturedLook("Owner", std::move(completion));
            });
        })
        .then([&] {
            return completed(stage, "the password to be saved", shortly, [&](auto completion) {
                const std::span bytes(reinterpret_cast<const std::uint8_t*>(loginPassword.data()),
                                      loginPassword.size());
                auto password = SecretBytes::copyOf(bytes);
                if (!password) {
                    completion(std::unexpected(std::string(description(password.error()))));
                    return;
                }
                model.savePassword(std::move(*password), std::move(completion));
            });
        })
        .then([&] {
            UnlockSettings settings = model.settings();
            settings.isEnabled = true;
            // Patient also with a slow machine.
            settings.scanSeconds = 10;
            model.apply(settings);
            model.wireEngine();
            return check(model.state().isEnrolled && model.state().hasPassword,
                         "The face or the password was not saved.");
        })
        .end("the face is enrolled from nine poses and the password is saved");
}

Ending ownerComesBack(Stage& stage) {
    const Step unlocked =
        Steps()
            .then([&] { return lockScreen(stage); })
            .then([&] { return show(stage, "live-normal", owner()); })
            .then([&] { return comeBack(stage); })
            .then([&] { return stage.waitForLog("Recognised Owner", aLook); })
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
            return stage.waitUntil("the request to update the password", shortly,
                                   [&] { return stage.wasAskedToUpdatePassword(); });
        })
        .end("turned down twice, typing suspended, the owner asked to update the password");
}

}  // namespace

std::vector<Act> acts() {
    return {{"The owner is enrolled", enrolOwner},
            {"The owner comes back", ownerComesBack},
            {"A stranger comes", strangerComes},
            {"Somebody holds up the owner’s photo on a phone", photoIsHeldUp},
            {"The login password was changed elsewhere", passwordIsOutOfDate}};
}

}  // namespace marrowby
