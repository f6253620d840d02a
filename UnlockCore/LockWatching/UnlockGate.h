#pragma once

#include "UnlockCore/LockWatching/UnlockConditions.h"

#include <string_view>
#include <variant>

namespace marrowby {

namespace unlockgate {

/// In order of precedence: what is set up, then the screen, then the right to type, then the
/// camera.
enum class Refusal {
    off,
    vaultLocked,
    noPassword,
    passwordRejected,
    notLocked,
    noAccessibility,
    noMatch,
    notLive
};

[[nodiscard]] std::string_view rawValue(Refusal refusal);

struct Refuse {
    Refusal refusal = Refusal::off;
    friend bool operator==(const Refuse&, const Refuse&) = default;
};
struct Type {
    friend bool operator==(const Type&, const Type&) = default;
};

struct Decision : std::variant<Refuse, Type> {
    using Refuse = unlockgate::Refuse;
    using Type = unlockgate::Type;
    using variant::variant;
};

}  // namespace unlockgate

/// Decides whether the password may be typed at this moment.
struct UnlockGate {
    using Refusal = unlockgate::Refusal;
    using Decision = unlockgate::Decision;

    [[nodiscard]] static Decision decide(const UnlockConditions& conditions);
};

}  // namespace marrowby
