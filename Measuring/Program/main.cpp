#include "Measuring/LookFolders.h"
#include "Measuring/LookMeter.h"
#include "Measuring/Report.h"
#include "Measuring/SceneLooks.h"
#include "Measuring/ScorePlot.h"
#include "UnlockCore/Recognition/MatchStrictness.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string_view>

namespace {

using namespace marrowby;

constexpr const char* usage =
    "marrowby-measure [OPTION…] FOLDER\n"
    "marrowby-measure [OPTION…] --scenes SCENE,…\n"
    "\n"
    "Plays looks (folders of pictures in the order of their names) to the lock screen’s "
    "recognition\n"
    "and liveness, and tells how often attacks are let in, people refused and faces confused.\n"
    "FOLDER holds enrol/PERSON/…, genuine/PERSON/… and attack/KIND/PERSON/…, each folder of\n"
    "pictures being one look; a truth.json beside them may give their rate (\"fps\"). Scenes are "
    "the\n"
    "rehearsal’s, filmed as they are needed (marrowby-scenes --list); names may be beginnings.\n"
    "\n"
    "  --models FOLDER            the networks; else models in the folder of MARROWBY_SHARED, "
    "else\n"
    "                             the rehearsal’s own in Models\n"
    "  --mode standard|strict     how much proof of life is asked\n"
    "  --cues all|CUE,CUE…        cues that count, instead of the lock screen’s own: planar, "
    "moire,\n"
    "                             glossGlare, deviceDetected, headTurn\n"
    "  --strictness relaxed|standard|strict\n"
    "  --fps NUMBER               pictures per second, where no truth.json tells, else 30\n"
    "  --takes COUNT              looks of every scene, else 1\n"
    "  --first NUMBER             of the first take, else 1\n"
    "  --seconds NUMBER           how long each lasts at most, else 5\n"
    "  --size WIDTHxHEIGHT        of the scenes’ camera, else 1280x720\n"
    "  --csv FILE                 one line per look\n"
    "  --plot FILE.png            how the scores are spread\n";

constexpr int smallestSide = 64;
constexpr std::size_t largestSide = 4096;

struct Options {
    LookMeter::Settings settings;
    std::filesystem::path folder;
    SceneLooks scenes;
    double framesPerSecond = 30;
    std::string csv;
    std::string plot;
};

std::vector<std::string> parts(const std::string& text, char separator) {
    std::vector<std::string> found;
    std::istringstream list(text);
    for (std::string one; std::getline(list, one, separator);)
        found.push_back(one);
    return found;
}

/// 0 for what is no number.
std::size_t number(const std::string& text) {
    return std::strtoull(text.c_str(), nullptr, 10);
}

std::optional<std::set<LivenessCue>> cuesNamed(const std::string& names) {
    std::set<LivenessCue> cues{LivenessCue::realFace};
    if (names == "all") {
        cues.insert(allLivenessCues.begin(), allLivenessCues.end());
        return cues;
    }
    for (const std::string& one : parts(names, ',')) {
        const auto cue = livenessCue(one);
        if (!cue) return std::nullopt;
        cues.insert(*cue);
    }
    return cues;
}

bool apply(Options& options, const std::string& name, const std::string& value) {
    if (name == "--models") {
        options.settings.models = value;
    } else if (name == "--mode") {
        options.settings.mode = livenessMode(value);
        return value == rawValue(options.settings.mode);
    } else if (name == "--cues") {
        options.settings.enabledCues = cuesNamed(value);
        return options.settings.enabledCues.has_value();
    } else if (name == "--strictness") {
        const auto strictness = matchStrictness(value);
        if (!strictness) return false;
        options.settings.threshold = threshold(*strictness);
    } else if (name == "--fps") {
        options.framesPerSecond = std::strtod(value.c_str(), nullptr);
        options.scenes.framesPerSecond = options.framesPerSecond;
        return options.framesPerSecond >= 1 && options.framesPerSecond <= 1000;
    } else if (name == "--scenes") {
        options.scenes.scenes = parts(value, ',');
        return !options.scenes.scenes.empty();
    } else if (name == "--takes") {
        options.scenes.count = number(value);
        return options.scenes.count > 0;
    } else if (name == "--first") {
        options.scenes.first = number(value);
        return options.scenes.first > 0;
    } else if (name == "--seconds") {
        options.scenes.lasts = TimeInterval(std::strtod(value.c_str(), nullptr));
        return options.scenes.lasts > TimeInterval(0) && options.scenes.lasts < TimeInterval(1000);
    } else if (name == "--size") {
        const auto sides = parts(value, 'x');
        if (sides.size() != 2) return false;
        options.scenes.width = static_cast<int>(std::min(number(sides[0]), largestSide));
        options.scenes.height = static_cast<int>(std::min(number(sides[1]), largestSide));
        return options.scenes.width >= smallestSide && options.scenes.height >= smallestSide;
    } else if (name == "--csv") {
        options.csv = value;
    } else if (name == "--plot") {
        options.plot = value;
    } else {
        return false;
    }
    return true;
}

std::optional<Options> parse(const std::vector<std::string>& words) {
    Options options;
    const char* shared = std::getenv("MARROWBY_SHARED");
    options.settings.models =
        shared != nullptr ? std::filesystem::path(shared) / "models" : "Models";
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i].starts_with("--")) {
            if (i + 1 >= words.size() || !apply(options, words[i], words[i + 1])) {
                return std::nullopt;
            }
            ++i;
        } else if (options.folder.empty()) {
            options.folder = words[i];
        } else {
            return std::nullopt;
        }
    }
    if (options.folder.empty() == options.scenes.scenes.empty()) return std::nullopt;
    return options;
}

std::expected<std::vector<Look>, std::string> looksAsked(const Options& options) {
    if (!options.folder.empty()) return looksBelow(options.folder, options.framesPerSecond);
    auto looks = looksOf(options.scenes);
    if (looks.empty()) return std::unexpected("There are no such scenes to look at.");
    return looks;
}

std::expected<std::vector<LookResult>, std::string> measureAll(const Options& options) {
    const auto looks = looksAsked(options);
    if (!looks) return std::unexpected(looks.error());
    auto meter = LookMeter::create(options.settings);
    if (!meter) return std::unexpected(meter.error());
    for (const Look& look : *looks) {
        if (look.purpose != Look::Purpose::enrolment) continue;
        if (auto done = (*meter)->enroll(look); !done) return std::unexpected(done.error());
    }
    std::vector<LookResult> results;
    for (const Look& look : *looks) {
        if (look.purpose == Look::Purpose::enrolment) continue;
        auto result = (*meter)->measure(look);
        if (!result) return std::unexpected(result.error());
        results.push_back(*std::move(result));
        std::cerr << '\r' << results.size() << " looks measured" << std::flush;
    }
    std::cerr << '\n';
    return results;
}

int fail(const std::string& sentence) {
    std::cerr << sentence << '\n';
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char* argv[]) {
    const auto options = parse(std::vector<std::string>(argv + 1, argv + argc));
    if (!options) return fail(usage);
    const auto results = measureAll(*options);
    if (!results) return fail(results.error());
    writeReport(std::cout, *results);
    if (!options->csv.empty()) {
        std::ofstream file(options->csv);
        writeCsv(file, *results);
        if (!file.flush()) return fail("The table “" + options->csv + "” couldn’t be written.");
    }
    if (!options->plot.empty()) {
        if (auto drawn = writeScorePlot(options->plot, *results); !drawn)
            return fail(drawn.error());
    }
    return EXIT_SUCCESS;
}
