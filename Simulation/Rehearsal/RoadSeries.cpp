// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/RoadSeries.h"

#include "Simulation/Desktop/PrivateFolder.h"
#include "Simulation/Rehearsal/Stage.h"
#include "Simulation/Rehearsal/Story.h"
#include "UnlockCore/Engine/LogLine.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

namespace marrowby {

namespace {

using Step = std::expected<void, std::string>;

struct Series {
    const char* title;
    int picturesPerSecond;
    /// Each unlock comes after the program gave its models back.
    bool comesLate = false;
};

constexpr std::array everySeries{
    Series{"15 pictures a second", 15}, Series{"30 pictures a second", 30},
    Series{"15 pictures a second, each time with the models to be loaded anew", 15, true}};
/// Longer than the models stay.
constexpr TimeInterval longAway{660};
/// The most pictures a second that are drawn as they come.
constexpr int filmed = 15;
constexpr const char* ownersScene = "live-normal";
constexpr std::string_view seenFromOutside = "typed, as seen from outside";

/// Milliseconds of one step in all unlocks.
struct Column {
    std::string step;
    std::vector<double> milliseconds;
};

/// By the nearest rank. `sorted` is not empty.
double percentile(const std::vector<double>& sorted, double share) {
    const auto rank =
        static_cast<std::size_t>(std::ceil(share * static_cast<double>(sorted.size())));
    return sorted[std::clamp<std::size_t>(rank, 1, sorted.size()) - 1];
}

class Road {
  public:
    void add(std::string_view step, double milliseconds) {
        auto found = std::ranges::find(columns_, step, &Column::step);
        if (found == columns_.end()) {
            columns_.push_back({.step = std::string(step), .milliseconds = {}});
            found = std::prev(columns_.end());
        }
        found->milliseconds.push_back(milliseconds);
    }
    /// The program's own line: “STEP=MILLISECONDS STEP=MILLISECONDS …”.
    void add(const std::string& line) {
        std::istringstream steps(line);
        for (std::string step; steps >> step;) {
            const auto equals = step.find('=');
            if (equals != std::string::npos)
                add(step.substr(0, equals), std::stod(step.substr(equals + 1)));
        }
    }
    void write(const char* title, std::ostream& out) const {
        out << "\nMilliseconds from the wake, " << title << "\n"
            << std::left << std::setw(30) << "" << std::right << std::setw(8) << "unlocks"
            << std::setw(8) << "median" << std::setw(8) << "95th" << std::setw(8) << "most" << '\n';
        for (Column column : columns_) {
            std::ranges::sort(column.milliseconds);
            out << std::left << std::setw(30) << column.step << std::right << std::setw(8)
                << column.milliseconds.size() << std::fixed << std::setprecision(0) << std::setw(8)
                << percentile(column.milliseconds, 0.5) << std::setw(8)
                << percentile(column.milliseconds, 0.95) << std::setw(8)
                << column.milliseconds.back() << '\n';
        }
        out << std::flush;
    }

  private:
    std::vector<Column> columns_;
};

Step unlockOften(Stage& stage, int unlocks, bool comesLate, Road& road) {
    for (int i = 0; i < unlocks; ++i) {
        if (comesLate) {
            if (auto passed = stage.moveClock(longAway); !passed) return passed;
        }
        if (auto unlocked = ownerUnlocks(stage); !unlocked) return unlocked;
        const auto log = stage.takeLog();
        const auto line = std::ranges::find(log, logevent::road, &ProgramJournal::Entry::event);
        const auto times = stage.unlockTimes();
        if (line == log.end() || !times) return std::unexpected("The program told no road.");
        road.add(line->subject);
        road.add(seenFromOutside, times->fromWake.count() * 1000);
    }
    return {};
}

}  // namespace

Step measureRoad(const std::filesystem::path& models, const std::filesystem::path& program,
                 int unlocks, std::ostream& out) {
    const auto home = PrivateFolder::create();
    if (!home) return std::unexpected(home.error());
    {
        const auto stage = Stage::create({.models = models, .program = program});
        if (!stage) return std::unexpected(stage.error());
        if (auto ready = acts().front().play(**stage); !ready)
            return std::unexpected(ready.error());
        if (auto kept = (*stage)->keepHome(home->path()); !kept) return kept;
    }
    for (const Series& series : everySeries) {
        const auto stage = Stage::create({.models = models,
                                          .program = program,
                                          .home = home->path(),
                                          .picturesPerSecond = series.picturesPerSecond});
        if (!stage) return std::unexpected(stage.error());
        if (auto known = (*stage)->setLoginPassword(firstPassword); !known) return known;
        if (auto confirmed = confirmOwner(**stage); !confirmed) return confirmed;
        const auto shown = series.picturesPerSecond > filmed
                               ? (*stage)->playReel(ownersScene, owner)
                               : (*stage)->putInFront(ownersScene, owner);
        if (!shown) return shown;
        Road road;
        if (auto unlocked = unlockOften(**stage, unlocks, series.comesLate, road); !unlocked)
            return unlocked;
        road.write(series.title, out);
    }
    return {};
}

}  // namespace marrowby
