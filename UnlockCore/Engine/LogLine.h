#pragma once

#include <string>
#include <string_view>

namespace marrowby {

/// One short English sentence for the log, kept in pieces so that a sentence of fixed words costs
/// no allocation. All views are of static text.
struct LogLine {
    std::string_view start{};
    std::string_view middle{};
    /// A name or a number.
    std::string detail{};
    std::string_view end{};

    [[nodiscard]] std::string text() const {
        std::string text(start);
        return text.append(middle).append(detail).append(end);
    }

    /// The sentence counts, not its pieces.
    friend bool operator==(const LogLine& a, const LogLine& b) { return a.text() == b.text(); }
};

}  // namespace marrowby
