// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Report.h"
#include "Simulation/Measuring/SceneTakes.h"
#include "Simulation/Measuring/ScorePlot.h"
#include "Simulation/Measuring/TakeFolders.h"
#include "Simulation/Measuring/TakeMeter.h"
#include "Simulation/Measuring/Trial.h"
#include "UnlockCore/Recognition/MatchStrictness.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <sstream>
#include <string_view>

namespace {

using namespace marrowby;

constexpr const char* usage =
    "marrowby-measure [OPTION…] FOLDER\n"
    "marrowby-measure [OPTION…] --scenes SCENE,…\n"
    "marrowby-measure [OPTION…] --evidence FOLDER\n"
    "\n"
    "Plays takes (folders of pictures in the order of their names) to the lock screen’s "
    "recognition\n"
    "and liveness, and tells how often attacks are let in, people refused and faces confused, and\n"
    "what each cue has to do with it.\n"
    "FOLDER holds enrol/PERSON/…, genuine/PERSON/… and attack/KIND/PERSON/…, each folder of\n"
    "pictures being one take; a truth.json beside them may give their rate (\"fps\"). Scenes are "
    "the\n"
    "rehearsal’s, filmed as they are needed (marrowby-scenes --list); names may be beginnings.\n"
    "\n"
    "  --models FOLDER            the models, of several packs if given again; else models in "
    "the\n"
    "                             folder of MARROWBY_SHARED, else the rehearsal’s own in Models\n"
    "  --mode standard|strict     how much proof of life is asked, else both\n"
    "  --cues all|CUE,CUE…        cues that count, instead of the lock screen’s own: planar, "
    "moire,\n"
    "                             glossGlare, deviceDetected, headTurn\n"
    "  --strictness relaxed|standard|strict\n"
    "  --fps NUMBER               pictures per second, where no truth.json tells, else 30\n"
    "  --takes COUNT              takes of every scene, else 1\n"
    "  --first NUMBER             of the first take, else 1\n"
    "  --seconds NUMBER           how long each lasts at most, else 5\n"
    "  --size WIDTHxHEIGHT        of the scenes’ camera, else 1280x720\n"
    "  --evidence FOLDER          keeps what was found there; a scene’s take that is there is not\n"
    "                             filmed again. Without scenes: judges what is there.\n"
    "  --csv FILE                 one line per take and way to judge it\n"
    "  --plot FILE.png            how the scores are spread\n";

constexpr int smallestSide = 64;
constexpr std::size_t largestSide = 4096;

/// Limit of the wait for trials that leave a cue out.
constexpr TimeInterval patience{1.5};

struct Options {
    std::vector<std::filesystem::path> models;
    std::vector<LivenessMode> modes{LivenessMode::standard, LivenessMode::strict};
    std::optional<std::set<LivenessCue>> cues;
    float threshold = 0.5F;
    std::filesystem::path folder;
    std::filesystem::path evidence;
    SceneTakes scenes;
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

/// 0 for NaN.
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
        options.models.emplace_back(value);
    } else if (name == "--mode") {
        options.modes = {livenessMode(value)};
        return value == rawValue(options.modes.front());
    } else if (name == "--cues") {
        options.cues = cuesNamed(value);
        return options.cues.has_value();
    } else if (name == "--strictness") {
        const auto strictness = matchStrictness(value);
        if (!strictness) return false;
        options.threshold = threshold(*strictness);
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
    } else if (name == "--evidence") {
        options.evidence = value;
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
    if (options.models.empty()) {
        const char* shared = std::getenv("MARROWBY_SHARED");
        options.models.push_back(shared != nullptr ? std::filesystem::path(shared) / "models"
                                                   : "Models");
    }
    const bool areFilmed = !options.scenes.scenes.empty();
    if (!options.folder.empty() && (areFilmed || !options.evidence.empty())) return std::nullopt;
    if (options.folder.empty() && !areFilmed && options.evidence.empty()) return std::nullopt;
    return options;
}

std::expected<std::vector<Take>, std::string> takesAsked(const Options& options) {
    if (!options.folder.empty()) return takesBelow(options.folder, options.framesPerSecond);
    if (options.scenes.scenes.empty()) return {};
    auto takes = takesOf(options.scenes);
    if (takes.empty()) return std::unexpected("There are no such scenes to film.");
    return takes;
}

/// A model pack and its evidence.
struct Pack {
    std::unique_ptr<TakeMeter> meter;
    /// The folder of kept evidence, if any.
    std::filesystem::path kept;
    std::vector<TakeEvidence> evidence;

    [[nodiscard]] std::filesystem::path file(const Take& take) const {
        return kept / (take.label.name + ".cbor");
    }
};

std::expected<std::vector<Pack>, std::string> packsAsked(const Options& options) {
    std::vector<Pack> packs;
    for (const auto& models : options.models) {
        auto meter = TakeMeter::create(models, options.threshold);
        if (!meter) return std::unexpected(meter.error());
        const auto kept = options.evidence.empty() ? std::filesystem::path()
                                                   : options.evidence / (*meter)->name();
        packs.push_back({.meter = *std::move(meter), .kept = kept, .evidence = {}});
    }
    return packs;
}

/// Records what is not kept yet.
std::expected<void, std::string> recordAll(const std::vector<Take>& takes, std::vector<Pack>& packs,
                                           std::span<const Trial> trials) {
    std::vector<TakeMeter*> meters;
    meters.reserve(packs.size());
    for (const Pack& pack : packs)
        meters.push_back(pack.meter.get());
    std::size_t done = 0;
    for (const Take& take : takes) {
        std::cerr << '\r' << ++done << " of " << takes.size() << " takes" << std::flush;
        const auto isKept = [&](const Pack& pack) {
            return !pack.kept.empty() && std::filesystem::exists(pack.file(take));
        };
        if (take.label.purpose == Take::Purpose::enrolment || std::ranges::all_of(packs, isKept)) {
            continue;
        }
        auto recorded = record(take, meters, trials, patience);
        if (!recorded) return std::unexpected(recorded.error());
        for (std::size_t i = 0; i < packs.size(); ++i) {
            Pack& pack = packs[i];
            if (pack.kept.empty()) {
                pack.evidence.push_back(std::move((*recorded)[i]));
            } else if (auto written = writeEvidence(pack.file(take), (*recorded)[i]); !written) {
                return std::unexpected(written.error());
            }
        }
    }
    std::cerr << '\n';
    return {};
}

std::expected<void, std::string> readKept(Pack& pack) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(pack.kept, error)) {
        if (entry.path().extension() == ".cbor") files.push_back(entry.path());
    }
    std::ranges::sort(files);
    for (const auto& file : files) {
        auto evidence = readEvidence(file);
        if (!evidence) return std::unexpected(evidence.error());
        pack.evidence.push_back(*std::move(evidence));
    }
    return {};
}

std::vector<TrialResults> judgedAll(const Pack& pack, std::span<const Trial> trials) {
    std::vector<TrialResults> all;
    for (const Trial& trial : trials) {
        TrialResults& results = all.emplace_back(TrialResults{.trial = trial, .results = {}});
        for (const TakeEvidence& take : pack.evidence) {
            if (trial.mode == LivenessMode::strict && !take.label.turnsWhenAsked) continue;
            results.results.push_back(judged(take, trial, pack.meter->people()));
        }
    }
    return all;
}

std::expected<std::vector<Pack>, std::string> gather(const Options& options,
                                                     std::span<const Trial> trials) {
    const auto takes = takesAsked(options);
    if (!takes) return std::unexpected(takes.error());
    auto packs = packsAsked(options);
    if (!packs) return packs;
    for (const Take& take : *takes) {
        if (take.label.purpose != Take::Purpose::enrolment) continue;
        for (const Pack& pack : *packs) {
            if (auto done = pack.meter->enroll(take); !done) return std::unexpected(done.error());
        }
    }
    if (auto done = recordAll(*takes, *packs, trials); !done) return std::unexpected(done.error());
    for (Pack& pack : *packs) {
        if (pack.kept.empty()) continue;
        if (auto done = readKept(pack); !done) return std::unexpected(done.error());
    }
    return packs;
}

/// The file's name with the pack's in it, where there are several packs.
std::string fileOf(const std::string& file, const Pack& pack, std::size_t packs) {
    if (packs == 1) return file;
    const std::filesystem::path path(file);
    return path.parent_path() /
           (path.stem().string() + "-" + pack.meter->name() + path.extension().string());
}

int fail(const std::string& sentence) {
    std::cerr << sentence << '\n';
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char* argv[]) {
    const auto options = parse(std::vector<std::string>(argv + 1, argv + argc));
    if (!options) return fail(usage);
    std::vector<Trial> all;
    for (const LivenessMode mode : options->modes)
        std::ranges::move(trials(mode, options->cues), std::back_inserter(all));
    const auto packs = gather(*options, all);
    if (!packs) return fail(packs.error());
    for (const Pack& pack : *packs) {
        const auto results = judgedAll(pack, all);
        std::cout << "Models: " << pack.meter->name() << "\n\n";
        writeReport(std::cout, results);
        std::cout << '\n';
        if (!options->csv.empty()) {
            const std::string name = fileOf(options->csv, pack, packs->size());
            std::ofstream file(name);
            writeCsv(file, results);
            if (!file.flush()) return fail("The table “" + name + "” couldn’t be written.");
        }
        if (!options->plot.empty()) {
            const std::string name = fileOf(options->plot, pack, packs->size());
            if (auto drawn = writeScorePlot(name, results.front().results); !drawn)
                return fail(drawn.error());
        }
    }
    return EXIT_SUCCESS;
}
