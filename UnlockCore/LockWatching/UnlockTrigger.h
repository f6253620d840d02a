// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string_view>

namespace marrowby {

/// A way in which the user lets a scan start.
enum class UnlockTrigger : std::uint8_t { onReturn, onSpace };

inline constexpr std::array allUnlockTriggers{UnlockTrigger::onReturn, UnlockTrigger::onSpace};

[[nodiscard]] std::string_view rawValue(UnlockTrigger trigger);
[[nodiscard]] Phrase title(UnlockTrigger trigger);

/// Reads a stored raw value; the older "onWake" and "onLock" both mean onReturn. Nothing for other
/// texts.
[[nodiscard]] std::optional<UnlockTrigger> unlockTrigger(std::string_view stored);

class UnlockTriggers {
  public:
    constexpr UnlockTriggers() = default;
    constexpr UnlockTriggers(std::initializer_list<UnlockTrigger> triggers) {
        for (const UnlockTrigger trigger : triggers)
            insert(trigger);
    }

    constexpr void insert(UnlockTrigger trigger) { bits_ |= bit(trigger); }
    constexpr void set(UnlockTrigger trigger, bool isIn) {
        bits_ = isIn ? bits_ | bit(trigger) : bits_ & ~bit(trigger);
    }
    [[nodiscard]] constexpr bool contains(UnlockTrigger trigger) const {
        return (bits_ & bit(trigger)) != 0;
    }

    friend constexpr bool operator==(const UnlockTriggers&, const UnlockTriggers&) = default;

  private:
    [[nodiscard]] static constexpr unsigned bit(UnlockTrigger trigger) {
        return 1U << static_cast<unsigned>(trigger);
    }

    unsigned bits_ = 0;
};

}  // namespace marrowby
