#pragma once

#include <string>
#include <string_view>

namespace marrowby {

/// One short English sentence for the log, in pieces: fixed text costs no allocation. All views are
/// of static text.
struct LogLine {
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
    /// For logs that other users may read.
    [[nodiscard]] std::string withoutNames() const {
        std::string text = LogLine{start, middle, detail, end, {}}.text();
        if (text.ends_with(' ')) text.pop_back();
        return text;
    }

    /// Equal text is equal, however it is split.
    friend bool operator==(const LogLine& a, const LogLine& b) { return a.text() == b.text(); }
};

}  // namespace marrowby
