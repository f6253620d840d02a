// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/PictureMaker.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>
#include <system_error>

namespace {

using namespace marrowby;

constexpr const char* usage =
    "marrowby-training-pictures FOLDER CHUNKS [PART PARTS]\n"
    "Draws ten people a chunk into FOLDER; chunks that are there already are left as they are.\n"
    "Of so many parts, to be drawn beside each other, only this one, counted from 0.\n";

/// None of them among distinctPeople(), who are for measuring.
constexpr std::uint64_t firstPerson = 100'000;
constexpr std::uint64_t peoplePerChunk = 10;
constexpr int facesPerPerson = 20;
/// From this chunk on the first people come again, in scenes only: whoever is seen alive is to be
/// seen on paper and on screens, too.
constexpr std::uint64_t chunksOfPeople = 100;
/// Before that, scenes need fewer people than faces do.
constexpr std::uint64_t chunksWithScenes = 70;
constexpr int scenesPerPerson = 2;
constexpr int momentsPerScene = 5;
constexpr int laterScenesPerPerson = 6;
constexpr int momentsPerLaterScene = 3;

std::string fileName(std::string_view kind, std::uint64_t chunk) {
    const std::string number = std::to_string(chunk);
    return std::string(kind) + '-' + std::string(4 - std::min<std::size_t>(4, number.size()), '0') +
           number + ".bin";
}

std::expected<void, std::string> drawLaterChunk(const std::filesystem::path& folder,
                                                std::uint64_t chunk) {
    const std::filesystem::path path = folder / fileName("scenes", chunk);
    if (std::filesystem::exists(path)) return {};
    PictureMaker maker(chunk + 1);
    RecordFile<records::Scene> scenes(path);
    const std::uint64_t first = firstPerson + (chunk - chunksOfPeople) * peoplePerChunk;
    for (std::uint64_t i = 0; i < peoplePerChunk; ++i) {
        for (int scene = 0; scene < laterScenesPerPerson; ++scene) {
            maker.scene(first + i, first + (i + 1) % peoplePerChunk, momentsPerLaterScene,
                        [&](const records::Scene& record) { scenes.add(record); });
        }
    }
    return scenes.finish();
}

std::expected<void, std::string> drawChunk(const std::filesystem::path& folder,
                                           std::uint64_t chunk) {
    const std::filesystem::path facesPath = folder / fileName("faces", chunk);
    const std::filesystem::path scenesPath = folder / fileName("scenes", chunk);
    // Written last.
    if (std::filesystem::exists(facesPath)) return {};
    PictureMaker maker(chunk + 1);
    RecordFile<records::Face> faces(facesPath);
    RecordFile<records::Scene> scenes(scenesPath);
    const std::uint64_t first = chunk * peoplePerChunk;
    for (std::uint64_t i = 0; i < peoplePerChunk; ++i) {
        for (int picture = 0; picture < facesPerPerson; ++picture) {
            faces.add(maker.face(firstPerson + first + i, static_cast<float>(first + i)));
        }
        const std::uint64_t other = first + (i + 1) % peoplePerChunk;
        for (int scene = 0; chunk < chunksWithScenes && scene < scenesPerPerson; ++scene) {
            maker.scene(firstPerson + first + i, firstPerson + other, momentsPerScene,
                        [&](const records::Scene& record) { scenes.add(record); });
        }
    }
    if (chunk < chunksWithScenes) {
        if (auto written = scenes.finish(); !written) return written;
    }
    return faces.finish();
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    const auto number = [&words](std::size_t index, std::uint64_t otherwise) {
        std::uint64_t value = otherwise;
        if (index < words.size()) {
            const std::string& word = words[index];
            (void)std::from_chars(word.data(), word.data() + word.size(), value);
        }
        return value;
    };
    const std::uint64_t chunks = number(1, 0);
    const std::uint64_t part = number(2, 0);
    const std::uint64_t parts = number(3, 1);
    if (chunks == 0 || parts == 0 || part >= parts) {
        std::cerr << usage;
        return EXIT_FAILURE;
    }
    std::error_code error;
    std::filesystem::create_directories(words[0], error);
    const auto began = std::chrono::steady_clock::now();
    for (std::uint64_t chunk = part; chunk < chunks; chunk += parts) {
        auto drawn =
            chunk < chunksOfPeople ? drawChunk(words[0], chunk) : drawLaterChunk(words[0], chunk);
        if (!drawn) {
            std::cerr << drawn.error() << '\n';
            return EXIT_FAILURE;
        }
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - began;
        std::cout << "Pictures: chunk " << chunk + 1 << " of " << chunks << ", "
                  << static_cast<int>(passed.count()) << " s\n"
                  << std::flush;
    }
    return EXIT_SUCCESS;
}
