// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Evidence.h"

#include "UnlockCore/Foundation/Fatal.h"

#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <span>
#include <utility>

#include <nlohmann/json.hpp>

namespace marrowby {

namespace {

using nlohmann::json;

/// The version of the layout below; others are not read.
constexpr int version = 3;

json packed(const Rect& r) {
    return {r.x, r.y, r.width, r.height};
}

Rect rect(const json& j) {
    return {j.at(0), j.at(1), j.at(2), j.at(3)};
}

template <typename Value>
json packed(const std::optional<Value>& value) {
    return value ? json(*value) : json();
}

template <typename Value>
std::optional<Value> optional(const json& j) {
    if (j.is_null()) return std::nullopt;
    return j.get<Value>();
}

/// Hundredths of a pixel, far below landmark noise.
json packed(std::span<const Point> points) {
    json numbers = json::array();
    for (const Point& point : points) {
        numbers.push_back(std::lround(point.x * 100));
        numbers.push_back(std::lround(point.y * 100));
    }
    return numbers;
}

std::vector<Point> points(const json& numbers) {
    std::vector<Point> points;
    for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
        points.push_back(
            {numbers.at(i).get<double>() / 100, numbers.at(i + 1).get<double>() / 100});
    }
    return points;
}

std::optional<Point> pupil(const json& landmarks, const char* name) {
    if (!landmarks.contains(name)) return std::nullopt;
    const auto found = points(landmarks.at(name));
    return found.empty() ? std::nullopt : std::optional(found.front());
}

json packed(const DetectedFace& face) {
    json j{{"box", packed(face.boundingBox)},
           {"normalized", packed(face.normalizedBoundingBox)},
           {"quality", packed(face.quality)},
           {"yaw", packed(face.yaw)},
           {"roll", packed(face.roll)},
           {"pitch", packed(face.pitch)},
           {"picture", {face.imageSize.width, face.imageSize.height}}};
    if (!face.landmarks) return j;
    json& landmarks = j["landmarks"] = {{"regions", json::array()}};
    for (const auto& [region, places] : face.landmarks->regions)
        landmarks["regions"].push_back({static_cast<int>(region), packed(places)});
    if (const auto& left = face.landmarks->leftPupil)
        landmarks["left"] = packed(std::span(&*left, 1));
    if (const auto& right = face.landmarks->rightPupil)
        landmarks["right"] = packed(std::span(&*right, 1));
    return j;
}

DetectedFace detectedFace(const json& j) {
    DetectedFace face{.boundingBox = rect(j.at("box")),
                      .normalizedBoundingBox = rect(j.at("normalized")),
                      .quality = optional<float>(j.at("quality")),
                      .yaw = optional<float>(j.at("yaw")),
                      .roll = optional<float>(j.at("roll")),
                      .pitch = optional<float>(j.at("pitch")),
                      .landmarks = std::nullopt,
                      .imageSize = {j.at("picture").at(0), j.at("picture").at(1)}};
    if (!j.contains("landmarks")) return face;
    const json& landmarks = j.at("landmarks");
    face.landmarks.emplace();
    face.landmarks->leftPupil = pupil(landmarks, "left");
    face.landmarks->rightPupil = pupil(landmarks, "right");
    for (const json& region : landmarks.at("regions")) {
        face.landmarks->regions[static_cast<LandmarkRegion>(region.at(0).get<int>())] =
            points(region.at(1));
    }
    return face;
}

json packed(const FrameEvidence& frame) {
    json j{{"at", frame.at.count()}};
    const auto& [liveness, fault, recognition, rectangle] = frame.findings;
    if (fault) j["fault"] = *fault;
    if (!recognition) {
        j["error"] = description(recognition.error());
        return j;
    }
    j["face"] = packed(recognition->face);
    j["embedding"] = recognition->embedding;
    if (rectangle) {
        j["rectangle"] = {packed(rectangle->rectangle), packed(rectangle->faceOverlapFraction)};
    }
    if (const auto& glare = liveness.glare) {
        j["glare"] = {glare->cropPixelWidth, glare->specularFraction, glare->specularClusterRatio};
    }
    if (const auto& moire = liveness.moire) j["moire"] = {moire->peakContrast, moire->patchSize};
    if (const auto& score = liveness.antiSpoof) {
        j["live"] = {score->live, score->live27, score->live40};
    }
    return j;
}

Bitmap noPicture() {
    auto picture = Bitmap::create(1, 1, 4, rgbx8, std::vector<std::uint8_t>(4));
    if (!picture) fatal("one pixel is no picture");
    return *std::move(picture);
}

FrameEvidence frameEvidence(const json& j) {
    const TimeInterval at(j.at("at").get<double>());
    std::optional<std::string> fault;
    if (j.contains("fault")) fault = j.at("fault").get<std::string>();
    if (!j.contains("face")) {
        return {.at = at, .findings = {.liveness = {}, .fault = fault}};
    }
    FaceRecognition seen{.embedding = j.at("embedding").get<Embedding>(),
                         .alignedImage = noPicture(),
                         .face = detectedFace(j.at("face"))};
    LivenessFrame liveness = livenessFrame(seen.face, Date(at));
    std::optional<devicebezeldetector::Observation> rectangle;
    if (j.contains("rectangle")) {
        const json& r = j.at("rectangle");
        rectangle = {.rectangle = rect(r.at(0)), .faceOverlapFraction = optional<double>(r.at(1))};
    }
    if (j.contains("glare")) {
        const json& g = j.at("glare");
        liveness.glare = GlareSample{g.at(0), g.at(1), g.at(2)};
    }
    if (j.contains("moire")) liveness.moire = MoireSample{j.at("moire").at(0), j.at("moire").at(1)};
    if (j.contains("live")) {
        const json& l = j.at("live");
        liveness.antiSpoof = AntiSpoofScore{l.at(0), l.at(1), l.at(2)};
    }
    return {.at = at,
            .findings = {std::move(liveness), std::move(fault), std::move(seen), rectangle}};
}

}  // namespace

std::expected<void, std::string> writeEvidence(const std::filesystem::path& file,
                                               const TakeEvidence& evidence) {
    const Take::Label& label = evidence.label;
    json j{{"version", version},     {"purpose", static_cast<int>(label.purpose)},
           {"attack", label.attack}, {"person", label.person},
           {"name", label.name},     {"turns", label.turnsWhenAsked}};
    json& frames = j["frames"] = json::array();
    for (const FrameEvidence& frame : evidence.frames)
        frames.push_back(packed(frame));
    // Renamed only when complete: recording may be interrupted.
    const std::filesystem::path begun = file.string() + ".part";
    const auto bytes = json::to_cbor(j);
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    {
        std::ofstream out(begun, std::ios::binary);
        out.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
        if (!out.flush()) error = std::make_error_code(std::errc::io_error);
    }
    if (!error) std::filesystem::rename(begun, file, error);
    if (!error) return {};
    return std::unexpected("The evidence “" + file.string() + "” couldn’t be written.");
}

std::expected<TakeEvidence, std::string> readEvidence(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    const std::vector<std::uint8_t> bytes(std::istreambuf_iterator<char>(in), {});
    try {
        const json j = json::from_cbor(bytes);
        if (j.at("version") == version) {
            TakeEvidence evidence{
                .label = {.purpose = static_cast<Take::Purpose>(j.at("purpose").get<int>()),
                          .attack = j.at("attack"),
                          .person = j.at("person"),
                          .name = j.at("name"),
                          .turnsWhenAsked = j.at("turns")},
                .frames = {}};
            for (const json& frame : j.at("frames"))
                evidence.frames.push_back(frameEvidence(frame));
            return evidence;
        }
    } catch (const json::exception& error) {
        return std::unexpected("The file “" + file.string() +
                               "” holds no evidence: " + error.what());
    }
    return std::unexpected("The file “" + file.string() + "” holds no evidence of this version.");
}

}  // namespace marrowby
