#pragma once

#include <string>
#include <string_view>

namespace marrowby {

/// One short English sentence for the log, kept in pieces so that a sentence of fixed words costs
/// no allocation. All views are of static text.
struct LogLine {
    std::string_view start{};
    std::string_view middle{};
    /// What is not static: a number, a title.
    std::string detail{};
    std::string_view end{};
    /// Of a person; last.
    std::string name{};

    [[nodiscard]] std::string text() const {
        std::string text(start);
        return text.append(middle).append(detail).append(end).append(name);
    }
    /// For logs that others may read.
    [[nodiscard]] std::string withoutNames() const {
        std::string text = LogLine{start, middle, detail, end, {}}.text();
        if (text.ends_with(' ')) text.pop_back();
        return text;
    }

    /// The sentence counts, not its pieces.
    friend bool operator==(const LogLine& a, const LogLine& b) { return a.text() == b.text(); }
};

}  // namespace marrowby
