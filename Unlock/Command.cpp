// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Command.h"

#include "UnlockCore/Foundation/Phrase.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace marrowby {

namespace {

using Verb = Command::Verb;

constexpr std::array verbs{Verb::status, Verb::doctor,   Verb::look, Verb::pause,
                           Verb::resume, Verb::settings, Verb::quit};

std::optional<std::int64_t> minutesIn(std::string_view word) {
    std::int64_t minutes = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), minutes);
    if (error != std::errc() || end != word.data() + word.size() || minutes < 1 ||
        minutes > Command::maxMinutes)
        return std::nullopt;
    return minutes;
}

std::unexpected<std::string> unknown(const std::string& word) {
    return std::unexpected(translated(
        "Marrowby Unlock knows no “{word}”; --help says what it knows.", {{"word", word}}));
}

}  // namespace

std::string_view rawValue(Verb verb) {
    switch (verb) {
        case Verb::status:
            return "status";
        case Verb::doctor:
            return "doctor";
        case Verb::look:
            return "look";
        case Verb::pause:
            return "pause";
        case Verb::resume:
            return "resume";
        case Verb::settings:
            return "settings";
        case Verb::quit:
            return "quit";
    }
    return {};
}

std::expected<Command, std::string> Command::parse(std::span<const std::string> words) {
    if (words.empty()) return unknown("");
    const auto* const verb = std::ranges::find(verbs, words.front(), rawValue);
    if (verb == verbs.end()) return unknown(words.front());
    Command command{.verb = *verb};
    std::size_t used = 1;
    if (*verb == Verb::pause && words.size() > used) {
        command.minutes = minutesIn(words[used]);
        if (!command.minutes)
            return std::unexpected(
                translated("A pause lasts from 1 to {most} minutes, not “{word}”.",
                           {{"most", maxMinutes}, {"word", words[used]}}));
        ++used;
    }
    if (words.size() > used) return unknown(words[used]);
    return command;
}

}  // namespace marrowby
