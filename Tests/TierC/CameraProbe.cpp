// SPDX-License-Identifier: Apache-2.0

// Runs one scan through V4L2 and the whole recognition chain.
//
//     camera-probe prepare SHARED FOLDER NAME...   enrols the owner of SHARED/media into
//         FOLDER/owner, and writes each named sequence as FOLDER/NAME.yuyv, 640 × 480
//     camera-probe look SHARED FOLDER FRAMES       scans for the owner and prints each frame's
//         result; ends after FRAMES frames, or with status 1 after three minutes

#include "Platforms/Linux/Camera/V4l2CaptureSession.h"
#include "Platforms/Linux/Camera/V4l2SystemCalls.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/ThreadWorkQueues.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Pictures/ImageFiles.h"
#include "Platforms/Linux/Vision/OpenCvFaceVision.h"
#include "Platforms/Linux/Vision/OpenCvFourierTransform.h"
#include "Platforms/Linux/Vision/OpenCvImaging.h"
#include "Platforms/Linux/Vision/OpenCvNeuralModels.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Recognition/FaceRecognizer.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <libyuv/convert_from_argb.h>

namespace marrowby {
namespace {

namespace fs = std::filesystem;

constexpr int width = 640;
constexpr int height = 480;
constexpr const char* embedderIdentifier = "mobilefacenet-128-test-1";

template <typename T, typename E>
T orThrow(std::expected<T, E> result) {
    if (result) return *std::move(result);
    if constexpr (std::is_same_v<E, std::string>) {
        throw std::runtime_error(result.error());
    } else {
        throw std::runtime_error(description(result.error()));
    }
}

std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> embedder(
    const fs::path& models, OpenCvNeuralModels& neuralModels, const OpenCvImaging& imaging) {
    return SFaceEmbedder::load(
        models, {.fileName = "Embedder128.onnx", .modelIdentifier = embedderIdentifier},
        neuralModels, imaging);
}

std::vector<fs::path> pictures(const fs::path& sequence) {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(sequence)) {
        if (entry.path().extension() == ".jpg") files.push_back(entry.path());
    }
    std::ranges::sort(files);
    return files;
}

/// At the camera's size.
Bitmap picture(const fs::path& file, const OpenCvImaging& imaging) {
    const auto source = orThrow(readPicture(file));
    const Size size = source->extent();
    auto image = imaging.render(*source, {0, 0, size.width, size.height}, width / size.width);
    if (!image || image->width() != width || image->height() != height) {
        throw std::runtime_error(file.string() + " has another shape than the camera.");
    }
    return *std::move(image);
}

void enrol(const fs::path& shared, const fs::path& folder, const OpenCvImaging& imaging) {
    OpenCvNeuralModels neuralModels;
    const auto models = shared / "models";
    const auto vision = orThrow(OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                                       models / "Landmarks98.onnx"));
    const FaceRecognizer recognizer(*vision, imaging,
                                    orThrow(embedder(models, neuralModels, imaging)),
                                    CameraFaceScanner::minimumFaceWidth);
    std::ofstream owner(folder / "owner");
    const auto files = pictures(shared / "media" / "owner-enrol");
    for (std::size_t i = 0; i < files.size(); i += files.size() / 18) {
        const auto recognition = orThrow(recognizer.recognise({.id = 0,
                                                               .image = picture(files[i], imaging),
                                                               .source = nullptr,
                                                               .sourceSize = {},
                                                               .timestamp = {}},
                                                              std::nullopt));
        for (const float value : recognition.embedding)
            owner << value << ' ';
        owner << '\n';
    }
}

void writeSequence(const fs::path& from, const fs::path& to, const OpenCvImaging& imaging) {
    std::ofstream out(to, std::ios::binary);
    for (const fs::path& file : pictures(from)) {
        const auto image = imaging.convert(picture(file, imaging), bgrx8);
        std::vector<std::uint8_t> bytes(std::size_t{width} * height * 2);
        if (!image || libyuv::ARGBToYUY2(image->bytes().data(), width * 4, bytes.data(), width * 2,
                                         width, height) != 0) {
            throw std::runtime_error(file.string() + " can’t be converted.");
        }
        std::ranges::copy(bytes, std::ostreambuf_iterator<char>(out));
    }
}

FaceIdentity owner(const fs::path& folder) {
    FaceIdentity identity{.id = {},
                          .name = "the owner",
                          .samples = {},
                          .modelIdentifier = embedderIdentifier,
                          .dimension = SFaceEmbedder::embeddingLength,
                          .createdAt = {}};
    std::ifstream file(folder / "owner");
    Embedding embedding;
    for (float value = 0; file >> value;) {
        embedding.push_back(value);
        if (embedding.size() < SFaceEmbedder::embeddingLength) continue;
        identity.samples.push_back({.embedding = std::exchange(embedding, {}),
                                    .pose = std::nullopt,
                                    .capturedAt = {},
                                    .quality = std::nullopt});
    }
    return identity;
}

std::string text(const ScanObservation& observation) {
    const auto* face = std::get_if<ScanObservation::Face>(&observation);
    if (!face) return "nobody";
    std::string line = face->match
                           ? face->match->name + " " + std::to_string(face->match->similarity)
                           : "a stranger";
    if (std::holds_alternative<LivenessDecision::Confirmed>(face->decision)) line += ", live";
    if (std::holds_alternative<LivenessDecision::Denied>(face->decision)) line += ", not live";
    return line;
}

int look(const fs::path& shared, const fs::path& folder, int frames) {
    QtMainThread mainThread;
    ThreadWorkQueues queues;
    const UnixSystemClock clock;
    OpenCvNeuralModels neuralModels;
    const OpenCvImaging imaging;
    const OpenCvFourierTransform fourier;
    CameraUseRegistry registry;
    const auto models = shared / "models";
    const auto vision =
        orThrow(OpenCvFaceVision::load(models / "face_detection_yunet_2023mar.onnx",
                                       models / "Landmarks98.onnx", queues.background()));
    CameraFaceScanner scanner(
        std::make_shared<V4l2CaptureSession>(std::make_shared<V4l2SystemCalls>()),
        {.queues = queues,
         .mainThread = mainThread,
         .clock = clock,
         .imaging = imaging,
         .vision = *vision,
         .fourier = fourier,
         .registry = registry,
         .words = linuxWords},
        [&] { return embedder(models, neuralModels, imaging); },
        [&] {
            return MiniFASNet::load(models, neuralModels, NeuralModels::ComputeUnits::all,
                                    "MiniFASNet.onnx");
        });

    int left = frames;
    const auto end = [&](int status) {
        scanner.stop();
        QCoreApplication::exit(status);
    };
    scanner.start(
        ScanID{},
        {.cameraID = std::nullopt,
         .identities = std::make_shared<const std::vector<FaceIdentity>>(1, owner(folder))},
        {.onFrame =
             [&](ScanID, const ScanObservation& observation) {
                 std::cout << text(observation) << '\n' << std::flush;
                 if (--left == 0) end(0);
             },
         .onCameraFailed =
             [&](const std::string& message) {
                 std::cout << message << '\n' << std::flush;
                 end(1);
             }});
    return QCoreApplication::exec();
}

int run(int argumentCount, char** arguments) {
    const QCoreApplication application(argumentCount, arguments);
    const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
    if (words.size() < 4 || (words[0] != "prepare" && words[0] != "look")) return EXIT_FAILURE;
    const fs::path shared = words[1];
    const fs::path folder = words[2];
    if (words[0] == "look") return look(shared, folder, std::stoi(words[3]));
    const OpenCvImaging imaging;
    enrol(shared, folder, imaging);
    for (std::size_t i = 3; i < words.size(); ++i)
        writeSequence(shared / "media" / words[i], folder / (words[i] + ".yuyv"), imaging);
    return EXIT_SUCCESS;
}

}  // namespace
}  // namespace marrowby

int main(int argumentCount, char** arguments) {
    try {
        return marrowby::run(argumentCount, arguments);
    } catch (const std::exception& fault) {
        std::cerr << fault.what() << '\n';
        return EXIT_FAILURE;
    }
}
