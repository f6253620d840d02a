// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/Person.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Training/PackFigures.h"
#include "UnlockCore/Recognition/MatchStrictness.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <memory>
#include <numbers>
#include <span>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace marrowby;

constexpr const char* usage =
    "marrowby-pack-figures PEOPLE|FIRST-LAST PACK...\n"
    "A table of how good packs of models are on so many people that ours did not learn from, or\n"
    "on the FIRST to the LAST of them, counted from 1.\n";

double quantile(std::vector<double> values, double part) {
    if (values.empty()) return std::nan("");
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(
        std::lround(part * static_cast<double>(values.size() - 1)))];
}

std::string number(double value, int digits = 2) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << value;
    return text.str();
}

std::string percent(double hits, double of) {
    return of > 0 ? number(100 * hits / of, 1) + " %" : "–";
}

using Values = std::vector<double>;

std::string quantiles(const Values& values, std::initializer_list<double> parts, double unit = 1,
                      int digits = 2) {
    std::string text;
    for (const double part : parts)
        text += (text.empty() ? "" : ", ") + number(quantile(values, part) * unit, digits);
    return text;
}

/// The part of the values that are at least so large.
std::string atLeast(const Values& values, double bar) {
    const auto count = std::ranges::count_if(values, [bar](double value) { return value >= bar; });
    return percent(static_cast<double>(count), static_cast<double>(values.size()));
}

struct Line {
    std::string what;
    std::string value;
};

std::vector<Line> lines(const PackFigures::Figures& figures) {
    constexpr double inDegrees = 180 / std::numbers::pi;
    constexpr double liveEnough = 0.7;
    std::vector<Line> result{
        {"faces found", percent(figures.found.hits, figures.found.of)},
        {"pictures with a face where none is",
         percent(figures.falseDetections.hits, figures.falseDetections.of)},
        {"landmarks, error in % of the eyes’ outer distance: median, 95 %",
         quantiles(figures.pointErrors, {0.5, 0.95}, 100, 1)},
        {"yaw, error in degrees: median, 95 %",
         quantiles(figures.yawErrors, {0.5, 0.95}, inDegrees, 1)},
        {"pitch, error in degrees: median, 95 %",
         quantiles(figures.pitchErrors, {0.5, 0.95}, inDegrees, 1)},
        {"same person, cosine: 1 %, 5 %, median", quantiles(figures.same, {0.01, 0.05, 0.5})},
        {"different people, cosine: median, 95 %, 99 %, most",
         quantiles(figures.different, {0.5, 0.95, 0.99, 1})}};
    for (const MatchStrictness strictness : allMatchStrictnesses) {
        const double bar{threshold(strictness)};
        result.push_back({inEnglish(displayName(strictness)) + ": known again, confused",
                          atLeast(figures.same, bar) + ", " + atLeast(figures.different, bar)});
    }
    for (const auto& [what, scores] : figures.live) {
        result.push_back(
            {"real face, " + what + ": 5 %, median, 95 %; at least 0.7",
             quantiles(scores, {0.05, 0.5, 0.95}) + "; " + atLeast(scores, liveEnough)});
    }
    return result;
}

/// Empty where there are none such.
std::span<const std::uint64_t> chosen(const std::string& words) {
    const std::span<const std::uint64_t> everybody = distinctPeople();
    const std::size_t dash = words.find('-');
    const auto number = [](const std::string& text) {
        return std::size_t{std::strtoull(text.c_str(), nullptr, 10)};
    };
    const std::size_t first = dash == std::string::npos ? 1 : number(words);
    const std::size_t last = std::min(
        number(dash == std::string::npos ? words : words.substr(dash + 1)), everybody.size());
    if (first < 1 || last < first) return {};
    return everybody.subspan(first - 1, last - first + 1);
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto people = words.size() < 2 ? std::span<const std::uint64_t>() : chosen(words[0]);
    if (people.empty()) {
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    std::vector<std::unique_ptr<PackFigures>> packs;
    for (std::size_t i = 1; i < words.size(); ++i) {
        auto figures = PackFigures::load(words[i]);
        if (!figures) {
            std::cerr << figures.error() << '\n';
            return EXIT_FAILURE;
        }
        packs.push_back(*std::move(figures));
    }
    for (std::size_t i = 0; i < people.size(); ++i) {
        Cast cast;
        for (const auto& pack : packs) {
            pack->enroll(people[i], cast);
            for (const Scene& scene : sceneCatalogue(people[i]))
                pack->measure(scene, people[i], cast);
        }
        std::cerr << "Measured: " << i + 1 << " of " << people.size() << " people\n";
    }

    std::vector<std::vector<Line>> columns;
    columns.reserve(packs.size());
    for (const auto& pack : packs)
        columns.push_back(lines(pack->figures()));
    std::cout << "| of " << people.size() << " people |";
    for (std::size_t i = 1; i < words.size(); ++i)
        std::cout << ' ' << words[i] << " |";
    std::cout << "\n|---|";
    for (std::size_t i = 1; i < words.size(); ++i)
        std::cout << "---|";
    std::cout << '\n';
    for (const Line& line : *std::ranges::max_element(columns, {}, &std::vector<Line>::size)) {
        std::cout << "| " << line.what << " |";
        for (const auto& column : columns) {
            const auto found = std::ranges::find(column, line.what, &Line::what);
            std::cout << ' ' << (found == column.end() ? "–" : found->value) << " |";
        }
        std::cout << '\n';
    }
    return EXIT_SUCCESS;
}
