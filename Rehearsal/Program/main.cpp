#include "Platforms/Linux/ProcessHardening.h"
#include "Rehearsal/Stage.h"
#include "Rehearsal/Story.h"

#include <QGuiApplication>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace marrowby;

constexpr const char* missingShared =
    "The rehearsal needs the folder ../shared (or the one that MARROWBY_SHARED names) with its "
    "networks, which are published ones prepared as ONNX files: YuNet, a 98-point landmark "
    "network, MobileFaceNet and MiniFASNet.";

struct Ended {
    std::string title;
    std::expected<std::string, std::string> how;
};

std::vector<Ended> playAll(Stage& stage) {
    std::vector<Ended> ended;
    for (const Act& act : acts()) {
        stage.transcript().heading("Act " + std::to_string(ended.size() + 1) + ": " + act.title);
        ended.push_back({act.title, act.play(stage)});
        stage.killLocker();
        // Each act stands on those before it.
        if (!ended.back().how) break;
    }
    return ended;
}

int report(const std::vector<Ended>& ended) {
    std::cout << "\nHow the acts ended\n";
    bool allWell = ended.size() == acts().size();
    for (const Ended& act : ended) {
        std::cout << (act.how ? "  as it should  " : "  NOT           ") << act.title << ": "
                  << (act.how ? *act.how : act.how.error()) << '\n';
        allWell = allWell && act.how;
    }
    for (std::size_t i = ended.size(); i < acts().size(); ++i) {
        std::cout << "  not played    " << acts()[i].title << '\n';
    }
    std::cout << std::flush;
    return allWell ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char* argv[]) {
    if (!makeProcessUndumpable()) {
        std::cerr << "This process’s memory can’t be kept private, so nothing was started.\n";
        return EXIT_FAILURE;
    }
    // The island is painted, and shown on the private screen only.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);

    const char* shared = std::getenv("MARROWBY_SHARED");
    const std::filesystem::path folder = shared != nullptr ? shared : "../shared";
    std::error_code error;
    if (!std::filesystem::is_directory(folder, error)) {
        std::cerr << missingShared << '\n';
        return EXIT_FAILURE;
    }
    auto stage = Stage::create(folder / "models");
    if (!stage) {
        std::cerr << stage.error() << '\n';
        return EXIT_FAILURE;
    }
    const std::vector<Ended> ended = playAll(**stage);
    stage->reset();
    return report(ended);
}
