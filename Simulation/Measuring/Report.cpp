// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Report.h"

#include "Simulation/Measuring/Proportion.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>

namespace marrowby {

namespace {

std::string percent(double rate) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << rate * 100 << " %";
    return text.str();
}

void line(std::ostream& out, const std::string& what, const Proportion& proportion) {
    const auto [low, high] = proportion.interval();
    out << "  " << std::left << std::setw(24) << what << std::right << std::setw(5)
        << proportion.count << " of " << std::left << std::setw(6) << proportion.total << std::right
        << std::setw(8) << percent(proportion.rate()) << "   " << percent(low) << " to "
        << percent(high) << '\n';
}

std::string_view name(Take::Purpose purpose) {
    switch (purpose) {
        case Take::Purpose::enrolment:
            return "enrol";
        case Take::Purpose::genuine:
            return "genuine";
        case Take::Purpose::attack:
            return "attack";
    }
    return {};
}

std::string decisionText(const LivenessDecision& decision) {
    if (const auto* denied = std::get_if<LivenessDecision::Denied>(&decision)) {
        return "denied:" + std::string(rawValue(denied->cue));
    }
    return std::holds_alternative<LivenessDecision::Waiting>(decision) ? "waiting" : "confirmed";
}

/// In quotes where the text needs them.
std::string field(const std::string& text) {
    if (text.find_first_of(",\"\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + "\"";
}

void writeAttacks(std::ostream& out, std::span<const TakeResult> results) {
    std::map<std::string, Proportion> accepted;
    std::map<std::string, std::map<std::string, int>> ends;
    for (const TakeResult& result : results) {
        if (result.label.purpose != Take::Purpose::attack) continue;
        accepted[result.label.attack].add(result.isOpened);
        ++ends[result.label.attack][decisionText(result.decision)];
    }
    if (accepted.empty()) return;
    out << "Attacks let in\n";
    for (const auto& [kind, proportion] : accepted)
        line(out, kind, proportion);
    out << "How they ended\n";
    for (const auto& [kind, counts] : ends) {
        out << "  " << std::left << std::setw(24) << kind << std::right;
        for (const auto& [end, count] : counts)
            out << ' ' << end << ' ' << count;
        out << '\n';
    }
}

/// Of a take of a scene; nothing of other takes.
std::string sceneOf(const std::string& take) {
    const std::size_t space = take.rfind(' ');
    return space == std::string::npos ? "" : take.substr(0, space);
}

void writeGenuine(std::ostream& out, std::span<const TakeResult> results) {
    Proportion refused;
    Proportion quick;
    std::map<std::string, Proportion> byScene;
    std::map<std::string, std::vector<std::string>> byEnd;
    std::vector<double> times;
    for (const TakeResult& result : results) {
        if (result.label.purpose != Take::Purpose::genuine) continue;
        refused.add(!result.isOpened);
        if (const auto scene = sceneOf(result.label.name); !scene.empty()) {
            byScene[scene].add(!result.isOpened);
        }
        if (!result.isOpened) byEnd[decisionText(result.decision)].push_back(result.label.name);
        if (result.timeToOpen) times.push_back(result.timeToOpen->count());
        quick.add(result.timeToOpen && *result.timeToOpen <= TimeInterval(2));
    }
    if (refused.total == 0) return;
    out << "People\n";
    line(out, "refused", refused);
    for (const auto& [scene, proportion] : byScene)
        line(out, "  " + scene, proportion);
    for (const auto& [end, takes] : byEnd) {
        out << "    " << end << ' ' << takes.size() << ':';
        for (const std::string& take : takes)
            out << ' ' << take << (&take == &takes.back() ? "\n" : ",");
    }
    line(out, "opened within 2 s", quick);
    if (times.empty()) return;
    std::ranges::sort(times);
    const auto at = [&](double part) {
        return times[static_cast<std::size_t>(
            std::lround(part * static_cast<double>(times.size() - 1)))];
    };
    out << std::fixed << std::setprecision(2) << "  opened after the first face in " << at(0.5)
        << " s (median), " << at(0.1) << " to " << at(0.9) << " s (10 % to 90 %)\n";
}

void writeMatches(std::ostream& out, std::span<const TakeResult> results) {
    Proportion falseMatches;
    Proportion falseNonMatches;
    for (const TakeResult& result : results) {
        if (result.label.purpose != Take::Purpose::genuine) continue;
        for (const auto& [person, likeness] : result.likeness) {
            if (person == result.label.person) {
                falseNonMatches.add(!likeness.matches);
            } else {
                falseMatches.add(likeness.matches);
            }
        }
    }
    if (falseMatches.total + falseNonMatches.total == 0) return;
    out << "Matching, a take against one enrolled person\n";
    line(out, "false match", falseMatches);
    line(out, "false non-match", falseNonMatches);
}

}  // namespace

void writeReport(std::ostream& out, std::span<const TakeResult> results) {
    writeAttacks(out, results);
    writeGenuine(out, results);
    writeMatches(out, results);
    out << "Intervals: 95 %, Clopper-Pearson (exact), takes taken as independent.\n";
}

void writeReport(std::ostream& out, std::span<const TrialResults> trials) {
    for (const auto& [trial, results] : trials) {
        if (!trial.isWhole || results.empty()) continue;
        out << "== " << trial.name << " ==\n";
        writeReport(out, results);
        out << '\n';
    }
    out << "== With a cue left out ==\n";
    for (const auto& [trial, results] : trials) {
        Proportion refused;
        std::map<std::string, Proportion> accepted;
        for (const TakeResult& result : results) {
            if (result.label.purpose == Take::Purpose::genuine) refused.add(!result.isOpened);
            if (result.label.purpose == Take::Purpose::attack) {
                accepted[result.label.attack].add(result.isOpened);
            }
        }
        out << "  " << trial.name << ": refused " << refused.count << " of " << refused.total;
        for (const auto& [kind, proportion] : accepted)
            out << ", " << kind << ' ' << proportion.count << " of " << proportion.total;
        out << '\n';
    }
}

namespace {

void writeCsv(std::ostream& out, const Trial& trial, std::span<const TakeResult> results) {
    for (const TakeResult& result : results) {
        out << trial.name << ',' << name(result.label.purpose) << ',' << field(result.label.attack)
            << ',' << field(result.label.person) << ',' << field(result.label.name) << ','
            << result.frames << ',' << result.framesWithFace << ',' << decisionText(result.decision)
            << ',' << (result.isOpened ? 1 : 0) << ',';
        if (result.timeToOpen) out << result.timeToOpen->count();
        out << ',';
        if (result.live) out << *result.live;
        for (const LivenessCue cue : allLivenessCues) {
            out << ',';
            if (const auto level = result.levels.find(cue); level != result.levels.end()) {
                out << level->second;
            }
        }
        std::optional<float> own;
        std::optional<float> other;
        for (const auto& [person, likeness] : result.likeness) {
            auto& best = person == result.label.person ? own : other;
            best = std::max(best.value_or(-1), likeness.similarity);
        }
        for (const auto& similarity : {own, other}) {
            out << ',';
            if (similarity) out << *similarity;
        }
        out << '\n';
    }
}

}  // namespace

void writeCsv(std::ostream& out, std::span<const TrialResults> trials) {
    out << "trial,purpose,attack,person,take,frames,with_face,decision,opened,seconds_to_open,live";
    for (const LivenessCue cue : allLivenessCues)
        out << ',' << rawValue(cue) << "_level";
    out << ",own_similarity,other_similarity\n";
    for (const auto& [trial, results] : trials)
        writeCsv(out, trial, results);
}

}  // namespace marrowby
