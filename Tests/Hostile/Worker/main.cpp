// SPDX-License-Identifier: Apache-2.0

// hostile-worker kills LOCKER COUNT SEED: kills a locker at random moments of the typing, with each
// of two signals and gaps of 0 and 1 ms between strokes. One output line for each of the four.
//
// hostile-worker honest LOCKER LAYOUT COUNT: types into an undisturbed locker with an empty field,
// with text left in it, and with its dialog open. One output line for each of the three.
//
// Benchmarks/hostile.py reads the lines. The exit status is 0 if everything ran, whatever the
// results.

#include "Tests/Hostile/Ground/HonestSeries.h"
#include "Tests/Hostile/Ground/KillSeries.h"

#include <QCoreApplication>
#include <charconv>
#include <cstdint>
#include <expected>
#include <iostream>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include <signal.h>

namespace marrowby {

namespace {

std::optional<ScreenLocker::Kind> lockerNamed(std::string_view name) {
    for (const auto& [known, kind] :
         {std::pair("i3lock", ScreenLocker::Kind::i3lock),
          std::pair("i3lock-background", ScreenLocker::Kind::i3lockInBackground),
          std::pair("xsecurelock", ScreenLocker::Kind::xsecurelock),
          std::pair("xscreensaver", ScreenLocker::Kind::xscreensaver),
          std::pair("mate-screensaver", ScreenLocker::Kind::mateScreensaver)}) {
        if (name == known) return kind;
    }
    return std::nullopt;
}

std::optional<std::uint64_t> number(std::string_view text) {
    std::uint64_t value = 0;
    const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
    return value;
}

std::expected<void, std::string> kill(WorkingDesktop& desktop, const std::string& name,
                                      ScreenLocker::Kind kind, std::uint64_t count,
                                      std::uint64_t seed) {
    for (const int gap : {0, 1}) {
        auto series = KillSeries::create(desktop, kind, TimeInterval(gap / 1000.0), ++seed);
        if (!series) return std::unexpected(series.error());
        for (const int signal : {SIGKILL, SIGTERM}) {
            const KillTally& tally = series->tally(signal);
            while (static_cast<std::uint64_t>(tally.kills) < count / 4) {
                if (auto killed = series->kill(signal); !killed)
                    return std::unexpected(killed.error());
            }
            std::cout << "kills " << name << (signal == SIGKILL ? " SIGKILL " : " SIGTERM ") << gap
                      << ' ' << tally.kills << ' ' << tally.whileTyping << ' ' << tally.stopped
                      << ' ' << tally.leaks << ' ' << tally.leakedCharacters << ' '
                      << tally.changedKeyboards << '\n'
                      << std::flush;
        }
    }
    return {};
}

std::expected<void, std::string> typeHonestly(WorkingDesktop& desktop, const std::string& name,
                                              ScreenLocker::Kind kind, const std::string& layout,
                                              std::uint64_t count) {
    auto series = HonestSeries::create(desktop, kind, layout);
    if (!series) return std::unexpected(series.error());
    for (std::uint64_t i = 0; i < count; ++i) {
        const auto field = static_cast<HonestSeries::Field>(i % 3);
        if (auto typed = series->type(field); !typed) return std::unexpected(typed.error());
    }
    const char* const fields[] = {"empty", "leftover", "awake"};
    for (std::size_t i = 0; i < std::size(fields); ++i) {
        const HonestTally& tally = series->tallies()[i];
        std::cout << "honest " << name << ' ' << layout << ' ' << fields[i] << ' ' << tally.typed
                  << ' ' << tally.accepted << ' ' << tally.medianMilliseconds() << ' '
                  << tally.leakedCharacters << '\n'
                  << std::flush;
    }
    return {};
}

int run(std::span<char*> words) {
    const auto usage = [] {
        std::cerr << "hostile-worker kills LOCKER COUNT SEED | honest LOCKER LAYOUT COUNT\n";
        return 2;
    };
    if (words.size() != 5) return usage();
    const std::string task = words[1];
    const std::string name = words[2];
    const auto kind = lockerNamed(name);
    const auto third = number(words[3]);
    const auto last = number(words[4]);
    const bool kills = task == "kills";
    if (!kind || !last || (kills && !third) || (!kills && task != "honest")) return usage();
    auto desktop = WorkingDesktop::create();
    if (!desktop) {
        std::cerr << desktop.error() << '\n';
        return 1;
    }
    const auto done = kills ? kill(*desktop, name, *kind, *third, *last)
                            : typeHonestly(*desktop, name, *kind, words[3], *last);
    if (!done) std::cerr << name << ": " << done.error() << '\n';
    return done ? 0 : 1;
}

}  // namespace

}  // namespace marrowby

int main(int argumentCount, char* arguments[]) {
    const QCoreApplication application(argumentCount, arguments);
    return marrowby::run({arguments, static_cast<std::size_t>(argumentCount)});
}
