// SPDX-License-Identifier: Apache-2.0
#pragma once

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

/// One short English sentence for the log, in pieces: fixed text costs no allocation. All views are
/// of static text.
struct LogLine {
    /// Lines for debugging go to the system’s log only.
    enum class Level { info, debug };

    Level level = Level::info;
    /// One of logevent.
    std::string_view event{};
    std::string_view start{};
    std::string_view middle{};
    /// Any text that is not static and names nobody.
    std::string detail{};
    std::string_view end{};
    /// Of a person.
    std::string name{};

    [[nodiscard]] std::string text() const {
        std::string text(start);
        return text.append(middle).append(detail).append(end).append(name);
    }
    /// What the event is about: a reason, a cue, a failure’s title.
    [[nodiscard]] std::string subject() const { return std::string(middle) + detail; }
    /// For logs that other users may read.
    [[nodiscard]] std::string withoutNames() const {
        LogLine nameless = *this;
        nameless.name.clear();
        std::string text = nameless.text();
        if (text.ends_with(' ')) text.pop_back();
        return text;
    }

    /// Equal text is equal, however it is split.
    friend bool operator==(const LogLine& a, const LogLine& b) { return a.text() == b.text(); }
};

}  // namespace marrowby
