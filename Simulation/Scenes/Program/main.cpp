// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Simulation/Scenes/Program/SceneScores.h"
#include "Simulation/Scenes/SceneCatalogue.h"
#include "Simulation/Scenes/SceneFilm.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace {

using namespace marrowby;
using nlohmann::json;

constexpr const char* usage =
    "marrowby-scenes --list                             the scenes and what happens in them\n"
    "marrowby-scenes SCENE FOLDER [SECONDS]             numbered pictures and a truth.json\n"
    "marrowby-scenes --contact FILE SCENE...            one picture of moments of scenes\n"
    "marrowby-scenes --speed SCENE...                   pictures per second of one processor\n"
    "marrowby-scenes --scores MODELS SCENE...           what the models in a folder make of "
    "them\n"
    "Names of scenes may be beginnings; “all” is all. Before all else: --person SEED, --people "
    "COUNT\n"
    "(for the scores), --take NUMBER (of one scene, else 0), --size WxH, --rate "
    "PICTURES-PER-SECOND.\n";

struct Options {
    std::uint64_t person = 0;
    std::size_t people = 1;
    std::uint64_t take = 0;
    int width = 640;
    int height = 480;
    double rate = 30;
};

json asJson(const Point& point) {
    const auto tenths = [](double value) { return std::round(value * 10) / 10; };
    return {tenths(point.x), tenths(point.y)};
}

json asJson(const FaceTruth& face) {
    const auto rounded = [](double value) { return std::round(value * 1e4) / 1e4; };
    json points = json::array();
    for (const Point& point : face.points)
        points.push_back(asJson(point));
    return {
        {"person", face.person},
        {"yaw", rounded(face.yaw)},
        {"pitch", rounded(face.pitch)},
        {"roll", rounded(face.roll)},
        {"box",
         {asJson(Point{face.box.x, face.box.y}), asJson(Point{face.box.maxX(), face.box.maxY()})}},
        {"points", points}};
}

json asJson(const SceneTruth& truth) {
    json result{{"at", truth.at.count()}, {"people", json::array()}};
    for (const FaceTruth& face : truth.people)
        result["people"].push_back(asJson(face));
    for (const SceneTruth::HeldUp& held : truth.heldUp) {
        json corners = json::array();
        for (const Point& corner : held.corners)
            corners.push_back(asJson(corner));
        result["heldUp"].push_back({{"attack", name(held.kind)},
                                    {"replay", held.isReplay},
                                    {"corners", corners},
                                    {"face", asJson(held.face)}});
    }
    return result;
}

std::vector<Scene> chosen(std::span<const std::string> names, const Options& options) {
    std::vector<Scene> scenes;
    for (Scene& scene : sceneCatalogue(options.person)) {
        if (std::ranges::any_of(names, [&scene](const std::string& name) {
                return name == "all" || scene.name.starts_with(name);
            })) {
            scenes.push_back(std::move(scene));
        }
    }
    return scenes;
}

SceneFilm::Frame shoot(SceneFilm& film, const Options& options, int picture) {
    const TimeInterval at(picture / options.rate);
    return film.shoot({.at = at,
                       .running = at,
                       .frameTime = TimeInterval(1 / options.rate),
                       .width = options.width,
                       .height = options.height});
}

Cast cast;

int fail(const std::string& sentence) {
    std::cerr << sentence << '\n';
    return EXIT_FAILURE;
}

int write(const Scene& scene, const std::filesystem::path& folder, double seconds,
          const Options& options) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    SceneFilm film(scene, cast);
    json truth{{"scene", scene.name}, {"fps", options.rate}, {"frames", json::array()}};
    for (int picture = 0; picture < seconds * options.rate; ++picture) {
        const auto frame = shoot(film, options, picture);
        std::ostringstream file;
        file << std::setw(4) << std::setfill('0') << picture << ".png";
        if (auto written = writePicture(folder / file.str(), *frame.picture); !written) {
            return fail(written.error());
        }
        truth["frames"].push_back(asJson(frame.truth));
    }
    std::ofstream(folder / "truth.json") << truth.dump() << '\n';
    return EXIT_SUCCESS;
}

/// A row of moments for every scene, half as large.
/// Writes a picture of twice the size, four bytes a pixel, into a part of another.
void halve(std::span<const std::uint8_t> from, std::size_t width, std::size_t height,
           std::span<std::uint8_t> to, std::size_t bytesPerRow) {
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width * 4; ++x) {
            const std::size_t left = y * width * 16 + x / 4 * 8 + x % 4;
            const std::size_t below = left + width * 8;
            const int sum = from[left] + from[left + 4] + from[below] + from[below + 4];
            to[y * bytesPerRow + x] = static_cast<std::uint8_t>((sum + 2) / 4);
        }
    }
}

int contact(const std::filesystem::path& file, const std::vector<Scene>& scenes,
            const Options& options) {
    constexpr int moments = 5;
    const int width = options.width / 2;
    const int height = options.height / 2;
    const auto wide = static_cast<std::size_t>(width);
    const auto tall = static_cast<std::size_t>(height);
    const std::size_t row = wide * moments * 4;
    std::vector<std::uint8_t> sheet(row * tall * scenes.size());
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        std::cout << i + 1 << ". " << scenes[i].name << '\n' << std::flush;
        SceneFilm film(scenes[i], cast);
        for (int moment = 0; moment < moments; ++moment) {
            // One at the very start, and what follows once the exposure has settled.
            SceneFilm::Frame frame;
            const int last = moment * 20;
            for (int picture = std::max(last - 6, 0); picture <= last; ++picture) {
                frame = shoot(film, options, picture);
            }
            const std::span part = std::span(sheet).subspan(
                i * tall * row + static_cast<std::size_t>(moment) * wide * 4);
            halve(frame.picture->bytes(), wide, tall, part, row);
        }
    }
    const auto picture = PixelBuffer::create(
        width * moments, height * static_cast<int>(scenes.size()), row, std::move(sheet));
    if (!picture) return fail("There is nothing to show.");
    if (auto written = writePicture(file, *picture); !written) return fail(written.error());
    return EXIT_SUCCESS;
}

int measureSpeed(const std::vector<Scene>& scenes, const Options& options) {
    constexpr int pictures = 40;
    for (const Scene& scene : scenes) {
        SceneFilm film(scene, cast);
        (void)shoot(film, options, 0);
        const std::clock_t begin = std::clock();
        for (int i = 1; i <= pictures; ++i)
            (void)shoot(film, options, i);
        const double took = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
        std::cout << std::left << std::setw(24) << scene.name << std::right << std::fixed
                  << std::setprecision(1) << std::setw(8) << pictures / took << " pictures/s\n"
                  << std::flush;
    }
    return EXIT_SUCCESS;
}

float quantile(std::vector<float> values, double part) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(
        std::lround(part * static_cast<double>(values.size() - 1)))];
}

int measureScores(const std::filesystem::path& models, const std::vector<Scene>& scenes,
                  const Options& options) {
    auto scores = SceneScores::load(models);
    if (!scores) return fail(scores.error());
    struct Row {
        SceneScores::Score sum;
        int looks = 0;
        int live = 0;
    };
    std::vector<Row> rows(scenes.size());
    for (const std::uint64_t person : options.people > 1 ? distinctPeople().first(options.people)
                                                         : std::span(&options.person, 1)) {
        if (const auto reference = sceneNamed("live-turning", person)) {
            (*scores)->enroll(*reference);
        }
        for (std::size_t i = 0; i < scenes.size(); ++i) {
            const auto scene = sceneNamed(scenes[i].name, person);
            if (!scene) continue;
            const auto score = (*scores)->score(*scene, options.width, options.height);
            rows[i].looks += 1;
            rows[i].live += score.decision == "live" ? 1 : 0;
            SceneScores::Score& sum = rows[i].sum;
            sum.pictures += score.pictures;
            sum.withFace += score.withFace;
            std::ranges::copy(score.live, std::back_inserter(sum.live));
            std::ranges::copy(score.likeness, std::back_inserter(sum.likeness));
            std::ranges::copy(score.finder, std::back_inserter(sum.finder));
        }
    }
    std::cout << "                          pictures  finder   real-face probability  likeness   "
                 "looks taken\n"
                 "scene                    with face  median  lowest median highest    median   "
                 "   for live\n";
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const Row& row = rows[i];
        std::cout << std::left << std::setw(24) << scenes[i].name << std::right << std::setw(4)
                  << row.sum.withFace << '/' << std::left << std::setw(4) << row.sum.pictures
                  << std::right << std::fixed << std::setprecision(2) << std::setw(8)
                  << quantile(row.sum.finder, 0.5) << std::setw(8) << quantile(row.sum.live, 0)
                  << std::setw(7) << quantile(row.sum.live, 0.5) << std::setw(8)
                  << quantile(row.sum.live, 1) << std::setw(10) << quantile(row.sum.likeness, 0.5)
                  << std::setw(10) << row.live << " of " << row.looks << '\n';
    }
    return EXIT_SUCCESS;
}

/// 0 for NaN.
int integer(std::string_view text) {
    int value = 0;
    (void)std::from_chars(text.begin(), text.end(), value);
    return value;
}

/// Takes the options from the front.
Options takeOptions(std::vector<std::string>& words) {
    Options options{.person = distinctPeople().front()};
    while (words.size() >= 2) {
        if (words[0] == "--person") {
            options.person = std::strtoull(words[1].c_str(), nullptr, 10);
        } else if (words[0] == "--people") {
            options.people = std::clamp<std::size_t>(std::strtoull(words[1].c_str(), nullptr, 10),
                                                     1, distinctPeople().size());
        } else if (words[0] == "--take") {
            options.take = std::strtoull(words[1].c_str(), nullptr, 10);
        } else if (words[0] == "--rate") {
            options.rate = std::max(std::strtod(words[1].c_str(), nullptr), 1.0);
        } else if (words[0] == "--size" && words[1].contains('x')) {
            const auto cross = words[1].find('x');
            options.width = std::max(integer(std::string_view(words[1]).substr(0, cross)), 64);
            options.height = std::max(integer(std::string_view(words[1]).substr(cross + 1)), 48);
        } else {
            break;
        }
        words.erase(words.begin(), words.begin() + 2);
    }
    return options;
}

}  // namespace

int main(int argc, char* argv[]) {
    std::vector<std::string> words(argv + 1, argv + argc);
    const Options options = takeOptions(words);
    const auto rest = [&words](std::size_t from) {
        return words.size() > from ? std::span(words).subspan(from) : std::span<std::string>();
    };
    const std::string command = words.empty() ? "" : words[0];
    if (command == "--list") {
        for (const Scene& scene : sceneCatalogue(options.person)) {
            std::cout << std::left << std::setw(24) << scene.name << scene.tells << '\n';
        }
        return EXIT_SUCCESS;
    }
    if (command == "--contact" && words.size() >= 3) {
        return contact(words[1], chosen(rest(2), options), options);
    }
    if (command == "--speed" && words.size() >= 2) {
        return measureSpeed(chosen(rest(1), options), options);
    }
    if (command == "--scores" && words.size() >= 3) {
        return measureScores(words[1], chosen(rest(2), options), options);
    }
    if (words.size() >= 2 && !command.starts_with("--")) {
        const auto scene = sceneNamed(command, options.person, options.take);
        if (!scene) return fail("There is no scene “" + command + "”.");
        const double seconds = words.size() > 2 ? std::strtod(words[2].c_str(), nullptr) : 3;
        return write(*scene, words[1], seconds, options);
    }
    std::cerr << usage;
    return EXIT_FAILURE;
}
