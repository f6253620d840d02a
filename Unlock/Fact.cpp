// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Fact.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>

namespace marrowby {

std::string Fact::line() const {
    // For eyes and programs alike, whatever the language.
    const std::string mark = isGood ? "ok  " : isMissing() ? "NO  " : "-   ";
    std::string line =
        mark +
        translated("{subject}: {what}",
                   {{"subject", subject},
                    {"what", what.empty() ? translated("the system doesn’t say why") : what}});
    if (line.back() != '.') line += '.';
    if (!isGood && !fix.empty()) line.append(" ").append(fix);
    // Device names and error texts may contain terminal escapes.
    std::ranges::replace_if(
        line, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7f'; }, ' ');
    return line;
}

}  // namespace marrowby
