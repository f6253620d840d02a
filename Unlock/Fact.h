// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace marrowby {

/// One line about what an unlock needs, for a terminal.
struct Fact {
    enum class Need : std::uint8_t { needed, optional };

    std::string subject;
    bool isGood = false;
    /// A sentence that may lack its capital, and its full stop where the system wrote it.
    std::string what;
    /// What the user can do where it is not good, as a sentence; may be empty.
    std::string fix{};
    Need need = Need::needed;

    [[nodiscard]] bool isMissing() const { return !isGood && need == Need::needed; }
    /// Without control characters.
    [[nodiscard]] std::string line() const;
};

}  // namespace marrowby
