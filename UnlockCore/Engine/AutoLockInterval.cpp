// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Engine/AutoLockInterval.h"

#include <chrono>

namespace marrowby {

std::optional<AutoLockInterval> autoLockInterval(std::string_view text) {
    for (const AutoLockInterval interval : allAutoLockIntervals) {
        if (rawValue(interval) == text) return interval;
    }
    return std::nullopt;
}

std::string_view rawValue(AutoLockInterval interval) {
    switch (interval) {
        case AutoLockInterval::week:
            return "week";
        case AutoLockInterval::twoWeeks:
            return "twoWeeks";
        case AutoLockInterval::month:
            return "month";
        case AutoLockInterval::never:
            return "never";
    }
    return {};
}

Phrase title(AutoLockInterval interval) {
    switch (interval) {
        case AutoLockInterval::week:
            return Phrase("After 7 days");
        case AutoLockInterval::twoWeeks:
            return Phrase("After 14 days");
        case AutoLockInterval::month:
            return Phrase("After 30 days");
        case AutoLockInterval::never:
            return Phrase("Only after a restart");
    }
    return {};
}

std::optional<TimeInterval> length(AutoLockInterval interval) {
    switch (interval) {
        case AutoLockInterval::week:
            return std::chrono::days(7);
        case AutoLockInterval::twoWeeks:
            return std::chrono::days(14);
        case AutoLockInterval::month:
            return std::chrono::days(30);
        case AutoLockInterval::never:
            return std::nullopt;
    }
    return std::nullopt;
}

}  // namespace marrowby
