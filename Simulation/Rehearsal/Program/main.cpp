// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/ProcessHardening.h"
#include "Platforms/Linux/Desktop/XdgFolders.h"
#include "Simulation/Rehearsal/RoadSeries.h"
#include "Simulation/Rehearsal/Stage.h"
#include "Simulation/Rehearsal/Story.h"
#include "Simulation/Rehearsal/WindowPictures.h"
#include "Simulation/Scenes/ModelFolder.h"

#include <QGuiApplication>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace marrowby;

constexpr const char* usage =
    "marrowby-rehearsal [--pictures PICTURES | --road UNLOCKS] [FOLDER]\n"
    "Plays a whole story of the unlock on the models in FOLDER; else on the standard pack, "
    "where\n"
    "the user has prepared it; else on the rehearsal’s own, in Models. With --pictures it only "
    "sets "
    "the\nprogram up, and puts pictures of its windows into the folder PICTURES; with --road it "
    "unlocks\nthat often, and tells when each step of an unlock was reached.\n";
constexpr const char* ownModels = "Models";
constexpr const char* contactSheet = "build/rehearsal.png";

/// The application's folder of the standard pack.
std::filesystem::path preparedModels() {
    const auto folders = XdgFolders::current();
    return folders ? folders->dataHome / "marrowby-unlock" / "models" : std::filesystem::path();
}

struct Wanted {
    std::optional<std::filesystem::path> pictures;
    std::optional<int> unlocks;
    std::optional<std::filesystem::path> models;
};

/// Null for a command line that means nothing.
std::optional<Wanted> wanted(std::span<char*> arguments) {
    Wanted wanted;
    if (arguments.size() > 1 && std::string_view(arguments[0]) == "--pictures") {
        wanted.pictures = arguments[1];
        arguments = arguments.subspan(2);
    } else if (arguments.size() > 1 && std::string_view(arguments[0]) == "--road") {
        wanted.unlocks = static_cast<int>(std::strtol(arguments[1], nullptr, 10));
        if (*wanted.unlocks < 1) return std::nullopt;
        arguments = arguments.subspan(2);
    }
    if (arguments.size() > 1 ||
        (arguments.size() == 1 && std::string_view(arguments[0]).starts_with("-")))
        return std::nullopt;
    if (!arguments.empty()) wanted.models = arguments[0];
    return wanted;
}

std::filesystem::path modelsToPlayWith() {
    std::error_code error;
    const auto prepared = preparedModels();
    const bool isPrepared = std::filesystem::exists(prepared / ModelPack::manifestFile, error);
    return isPrepared ? prepared : std::filesystem::path(ownModels);
}

void tellOf(const ModelPack& models) {
    std::cout << "Models: " << models.name << " (" << models.folder.string() << ")\n";
    if (models.knowsRealFaces()) return;
    std::cout << "They know made-up people only. For real faces, prepare the standard pack:\n"
                 "  Tools/prepare-pack "
              << preparedModels() << '\n';
}

struct Ended {
    std::string title;
    std::chrono::duration<double> lasted;
    std::expected<std::string, std::string> how;
};

std::vector<Ended> playAll(Stage& stage) {
    std::vector<Ended> ended;
    for (const Act& act : acts()) {
        stage.transcript().heading("Act " + std::to_string(ended.size() + 1) + ": " + act.title);
        const auto began = std::chrono::steady_clock::now();
        auto how = act.play(stage);
        stage.killLocker();
        ended.push_back({act.title, std::chrono::steady_clock::now() - began, std::move(how)});
        // Each act needs those before it.
        if (!ended.back().how) break;
    }
    return ended;
}

void line(std::string_view verdict, std::string_view seconds, std::string_view title) {
    std::cout << "  " << std::left << std::setw(13) << verdict << std::right << std::setw(6)
              << seconds << "  " << title;
}

std::string inSeconds(std::chrono::duration<double> time) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << time.count();
    return text.str();
}

bool report(const std::vector<Ended>& ended) {
    std::cout << "\nHow the acts ended, and their seconds\n";
    bool allWell = ended.size() == acts().size();
    std::chrono::duration<double> all{};
    for (const Ended& act : ended) {
        line(act.how ? "as it should" : "NOT", inSeconds(act.lasted), act.title);
        std::cout << ": " << (act.how ? *act.how : act.how.error()) << '\n';
        allWell = allWell && act.how;
        all += act.lasted;
    }
    for (std::size_t i = ended.size(); i < acts().size(); ++i) {
        line("not played", "", acts()[i].title);
        std::cout << '\n';
    }
    line("", inSeconds(all), "together\n");
    return allWell;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (!makeProcessUndumpable()) {
        std::cerr << "This process’s memory can’t be kept private, so nothing was started.\n";
        return EXIT_FAILURE;
    }
    // The contact sheet is painted, and shown nowhere.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);

    const auto asked = wanted(std::span(argv, static_cast<std::size_t>(argc)).subspan(1));
    if (!asked) {
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    const auto models = modelsIn(asked->models ? *asked->models : modelsToPlayWith());
    if (!models) {
        std::cerr << models.error() << '\n';
        return EXIT_FAILURE;
    }
    tellOf(*models);
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    const auto program = here / "marrowby-unlock-on-stage";
    if (asked->pictures) {
        const auto taken = takeWindowPictures(models->folder, program, *asked->pictures);
        if (!taken) std::cerr << taken.error() << '\n';
        return taken ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    if (asked->unlocks) {
        const auto measured = measureRoad(models->folder, program, *asked->unlocks, std::cout);
        if (!measured) std::cerr << measured.error() << '\n';
        return measured ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    auto stage = Stage::create({.models = models->folder, .program = program});
    if (!stage) {
        std::cerr << stage.error() << '\n';
        return EXIT_FAILURE;
    }
    const std::vector<Ended> ended = playAll(**stage);
    const ContactSheet sheet = (*stage)->contactSheet();
    stage->reset();
    const bool allWell = report(ended);
    const auto saved = sheet.save(contactSheet);
    std::cout << (saved ? "What the camera saw and the island showed: " + std::string(contactSheet)
                        : saved.error())
              << '\n';
    tellOf(*models);
    std::cout << std::flush;
    return allWell && saved ? EXIT_SUCCESS : EXIT_FAILURE;
}
