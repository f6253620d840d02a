// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <string>
#include <string_view>

namespace marrowby {

/// Names that stay as they are, for programs that read the log.
namespace logevent {
inline constexpr std::string_view locked = "locked";
inline constexpr std::string_view looking = "looking";
inline constexpr std::string_view faceCutOff = "face-cut-off";
inline constexpr std::string_view turnedAway = "turned-away";
inline constexpr std::string_view asked = "asked";
inline constexpr std::string_view stoppedLooking = "stopped-looking";
inline constexpr std::string_view recognised = "recognised";
inline constexpr std::string_view typed = "typed";
inline constexpr std::string_view askedDesktop = "asked-desktop";
inline constexpr std::string_view notUnlocked = "not-unlocked";
inline constexpr std::string_view passwordTurnedDown = "password-turned-down";
inline constexpr std::string_view typingSuspended = "typing-suspended";
inline constexpr std::string_view failed = "failed";
inline constexpr std::string_view stoodDown = "stood-down";
inline constexpr std::string_view unlocked = "unlocked";
inline constexpr std::string_view activityIgnored = "activity-ignored";
inline constexpr std::string_view modelsChanged = "models-changed";
inline constexpr std::string_view cameraMissing = "camera-missing";
inline constexpr std::string_view displayLost = "display-lost";
inline constexpr std::string_view sessionAway = "session-away";
inline constexpr std::string_view road = "road";
inline constexpr std::string_view noNotices = "no-notices";
}  // namespace logevent

/// One short sentence about what the engine did: English for the log, in the user's language for
/// the windows. Costs no allocation where all of it is fixed.
struct LogLine {
    /// Lines for debugging go to the system’s log only.
    enum class Level { info, debug };

    Level level = Level::info;
    /// One of logevent.
    std::string_view event{};
    /// May hold {what}, {detail} and {name}.
    Phrase sentence{};
    /// May hold {detail}.
    Phrase what{};
    /// Any text that is not fixed and names nobody.
    std::string detail{};
    /// Of a person.
    std::string name{};

    [[nodiscard]] std::string text() const {
        return inEnglish(sentence, {{"what", englishWhat()}, {"detail", detail}, {"name", name}});
    }
    /// What the event is about: a reason, a cue, a failure’s title.
    [[nodiscard]] std::string subject() const { return what.empty() ? detail : englishWhat(); }
    /// For logs that other users may read.
    [[nodiscard]] std::string withoutNames() const {
        LogLine nameless = *this;
        nameless.name.clear();
        return withoutLastSpace(nameless.text());
    }
    /// In the user's language, without names.
    [[nodiscard]] std::string shown() const {
        return withoutLastSpace(
            translated(sentence, {{"what", translated(what, {{"detail", detail}})},
                                  {"detail", detail},
                                  {"name", std::string()}}));
    }

    /// Equal text is equal.
    friend bool operator==(const LogLine& a, const LogLine& b) { return a.text() == b.text(); }

  private:
    [[nodiscard]] std::string englishWhat() const { return inEnglish(what, {{"detail", detail}}); }
    [[nodiscard]] static std::string withoutLastSpace(std::string text) {
        if (text.ends_with(' ')) text.pop_back();
        return text;
    }
};

}  // namespace marrowby
