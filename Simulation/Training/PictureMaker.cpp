// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Training/PictureMaker.h"

#include "Simulation/Scenes/Room.h"
#include "Simulation/Scenes/SceneFilm.h"
#include "Simulation/Training/RandomScene.h"
#include "UnlockCore/Foundation/Fatal.h"
#include "UnlockCore/Liveness/AntiSpoofCrop.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <utility>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

constexpr int roomCount = 6;
constexpr int roomWidth = 960;
constexpr int roomHeight = 720;

/// A face's height from the middle of the forehead to the chin, and how far its middle is below the
/// eyes, in metres.
constexpr double faceHeight = 0.185;
constexpr double faceMiddle = 0.02;

cv::Mat bgr(const PixelBuffer& picture) {
    const cv::Mat bgra(picture.height(), picture.width(), CV_8UC4,
                       const_cast<std::uint8_t*>(picture.bytes().data()),  // NOLINT
                       picture.bytesPerRow());
    cv::Mat result;
    cv::cvtColor(bgra, result, cv::COLOR_BGRA2BGR);
    return result;
}

/// A piece of a room, from anywhere in it.
LinearImage background(const LinearImage& room, int side, Chance& chance) {
    LinearImage result(side, side);
    const auto shift = [&](int most) {
        return static_cast<int>(chance.between(0, std::max(1, most)));
    };
    const int left = shift(room.width - side);
    const int top = shift(room.height - side);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side; ++x) {
            const float* from =
                room.pixel(std::min(left + x, room.width - 1), std::min(top + y, room.height - 1));
            std::copy_n(from, 3, result.pixel(x, y));
        }
    }
    return result;
}

/// As the camera would have set it by now, more or less.
Exposure exposureFor(const LinearImage& image, Chance& chance) {
    const TimeInterval frame(1.0 / (chance.between(0, 1) < 0.5 ? 15 : 30));
    Exposure exposure;
    exposure.begin(chance.next());
    const float brightness = meteredBrightness(image) * std::exp2(between(chance, -0.7, 0.7));
    exposure.follow(brightness, TimeInterval(0), frame);
    exposure.follow(brightness, TimeInterval(chance.between(0.3, 1.5)), frame);
    return exposure;
}

/// Of the five points that a finder gives.
std::array<Point, 5> fivePoints(const FaceTruth& face) {
    const auto& p = face.points;
    const auto middle = [&](std::size_t from, std::size_t to) {
        return Point{(p[from].x + p[to].x) / 2, (p[from].y + p[to].y) / 2};
    };
    return {middle(60, 64), middle(68, 72), p[54], p[76], p[82]};
}

/// The part of the box that lies within the picture.
double visible(const Rect& box, double width, double height) {
    return intersection(box, {0, 0, width, height}).area() / std::max(box.area(), 1e-9);
}

struct SeenFace {
    FaceTruth truth;
    float kind;
    std::optional<PropKind> attack;
};

float classOf(PropKind kind) {
    switch (kind) {
        case PropKind::print:
        case PropKind::bentPrint:
        case PropKind::poster:
        case PropKind::cutOut:
            return 0;
        case PropKind::phone:
        case PropKind::tablet:
        case PropKind::monitor:
            return 2;
    }
    fatal("not a kind of prop");
}

/// Shown and real faces, the largest first; of two at the same place only what is held before it.
std::vector<SeenFace> seenFaces(const SceneTruth& truth) {
    std::vector<SeenFace> faces;
    faces.reserve(truth.heldUp.size() + truth.people.size());
    for (const auto& held : truth.heldUp)
        faces.push_back({held.face, classOf(held.kind), held.kind});
    const std::size_t held = faces.size();
    for (const FaceTruth& person : truth.people) {
        const bool isHidden = std::any_of(
            faces.begin(), faces.begin() + static_cast<std::ptrdiff_t>(held),
            [&](const auto& face) {
                return intersection(face.truth.box, person.box).area() > 0.25 * person.box.area();
            });
        if (!isHidden) faces.push_back({person, 1, std::nullopt});
    }
    std::ranges::sort(faces, std::greater(),
                      [](const SeenFace& face) { return face.truth.box.area(); });
    return faces;
}

/// A box as a finder gives it.
Rect jittered(const Rect& box, Chance& chance) {
    const double scale = std::exp(chance.between(-0.1, 0.1));
    const double width = box.width * scale * std::exp(chance.between(-0.05, 0.05));
    const double height = box.height * scale;
    const Point middle = box.centre();
    return {middle.x + box.width * chance.between(-0.05, 0.05) - width / 2,
            middle.y + box.height * chance.between(-0.05, 0.05) - height / 2, width, height};
}

/// `working` is the picture as the application looks at it: blue, green, red.
void addCrops(const cv::Mat& working, const Rect& box, std::uint8_t* to) {
    const auto* first = working.ptr<std::uint8_t>();
    const RGBPixels pixels{.width = working.cols,
                           .height = working.rows,
                           .data = std::make_shared<const std::vector<std::uint8_t>>(
                               first, first + working.total() * 3),
                           .bytesPerRow = working.step,
                           .bytesPerPixel = 3,
                           .red = 2,
                           .green = 1,
                           .blue = 0};
    for (const double scale : {2.7, 4.0}) {
        const auto crop = AntiSpoofCrop::around(box, working.cols, working.rows, scale);
        const auto bytes = crop ? crop->resampled(pixels) : std::vector<std::uint8_t>();
        for (std::size_t i = 0; i + 3 < bytes.size(); i += 4)
            to = std::copy_n(&bytes[i], 3, to);
    }
}

/// A scene's picture and its largest face. Scenes without a face have no crops.
records::Scene record(const SceneFilm::Frame& frame, LightKind light, Chance& chance) {
    constexpr double leastVisible = 0.6;
    constexpr double farthestTurned = 1.15;
    constexpr double smallest = 14;

    const PixelBuffer& picture = *frame.picture;
    const double shrink = std::min(1.0, CameraFaceScanner::workingLongEdge / picture.width());
    cv::Mat working = bgr(picture);
    if (shrink < 1) cv::resize(working, working, {}, shrink, shrink, cv::INTER_AREA);
    records::Scene result;
    const double scale = double{records::Scene::width} / picture.width();
    cv::Mat whole(records::Scene::height, records::Scene::width, CV_8UC3, result.bytes.data());
    const cv::Size size(records::Scene::width, cvRound(picture.height() * scale));
    cv::Mat part = whole(cv::Rect({0, 0}, size));
    cv::resize(working, part, size, 0, 0, cv::INTER_AREA);

    auto faces = seenFaces(frame.truth);
    std::erase_if(faces, [&](const SeenFace& face) {
        return visible(face.truth.box, picture.width(), picture.height()) < 0.05;
    });
    faces.resize(std::min(faces.size(), records::Scene::mostFaces), {});
    auto& numbers = result.numbers;
    numbers[0] = static_cast<float>(faces.size());
    numbers[1] = -1;
    numbers[2] = -1;
    numbers[3] = static_cast<float>(light);
    for (std::size_t i = 0; i < faces.size(); ++i) {
        const FaceTruth& face = faces[i].truth;
        const bool isHard = visible(face.box, picture.width(), picture.height()) < leastVisible ||
                            std::hypot(face.yaw, face.pitch) > farthestTurned ||
                            face.box.width * scale < smallest;
        float* to = &numbers[16 + i * records::Scene::faceNumbers];
        for (const double number : {face.box.x, face.box.y, face.box.width, face.box.height})
            *to++ = static_cast<float>(number * scale);
        for (const Point& point : fivePoints(face)) {
            *to++ = static_cast<float>(point.x * scale);
            *to++ = static_cast<float>(point.y * scale);
        }
        *to++ = faces[i].kind;
        *to = isHard ? 1 : 0;
        if (i == 0 && !isHard) {
            numbers[1] = faces[i].kind;
            const std::optional<PropKind>& attack = faces[i].attack;
            if (attack) numbers[2] = static_cast<float>(*attack);
            std::uint8_t* crops = &result.bytes[records::Scene::pictureBytes];
            for (std::size_t box = 0; box < 2; ++box) {
                const Rect found = jittered(face.box, chance);
                addCrops(working,
                         {found.x * shrink, found.y * shrink, found.width * shrink,
                          found.height * shrink},
                         crops + box * 2 * records::Scene::cropBytes);
            }
        }
    }
    return result;
}

}  // namespace

PictureMaker::PictureMaker(std::uint64_t seed) : chance_(seed), sensor_(seed) {
    const auto camera = PinholeCamera::webcam(roomWidth, roomHeight);
    for (int i = 0; i < roomCount; ++i) {
        const LightKind kind = randomLight(chance_);
        rooms_.push_back({kind, drawRoom(roomWidth, roomHeight, camera, light(kind), chance_.next(),
                                         randomBackdrop(chance_))});
    }
}

records::Face PictureMaker::face(std::uint64_t person, float label) {
    const Room& room = rooms_[chance_.next() % rooms_.size()];
    // From a part of a camera's picture that has the face in its middle.
    const auto distance =
        static_cast<float>(std::exp(chance_.between(std::log(0.3), std::log(1.4))));
    const PinholeCamera whole = PinholeCamera::webcam(640, 480);
    const Vector3 position{.x = distance * between(chance_, -0.4, 0.4),
                           .y = distance * between(chance_, -0.25, 0.25),
                           .z = distance};
    const double perMetre = whole.focalLength / double{distance};
    const int side = static_cast<int>(faceHeight * perMetre * 1.9) + 8;
    const PinholeCamera camera{
        .focalLength = whole.focalLength,
        .centreX = side / 2.0 - perMetre * double{position.x},
        .centreY = side / 2.0 - perMetre * (double{position.y} + faceMiddle)};

    // As many faces that are hardly turned as faces that are.
    const float most = chance_.between(0, 1) < 0.5 ? 0.25F : 0.75F;
    const float yaw = between(chance_, -most, most);
    const float pitch = between(chance_, -most, most) * 0.6F;
    const auto pose = facingCamera(position, yaw, pitch, between(chance_, -0.35, 0.35));
    Expression expression;
    if (chance_.between(0, 1) < 0.3) expression.blink = between(chance_, 0, 1);
    if (chance_.between(0, 1) < 0.15) expression.mouthOpening = between(chance_, 0, 0.8);
    const bool looksAtCamera = chance_.between(0, 1) < 0.7;
    expression.gazeYaw =
        std::clamp(looksAtCamera ? -yaw : between(chance_, -0.4, 0.4), -0.5F, 0.5F);
    expression.gazePitch =
        std::clamp(looksAtCamera ? -pitch : between(chance_, -0.3, 0.3), -0.5F, 0.5F);

    LinearImage image = background(room.picture, side, chance_);
    const FaceTruth truth = renderer_.draw(image, camera, cast_.person(person), pose, expression,
                                           randomLighting(room.light, chance_));
    const auto picture = sensor_.develop(image, exposureFor(image, chance_), {});

    records::Face result;
    constexpr double margin = 1.5;
    const double length = std::max(truth.box.width, truth.box.height) * margin;
    const double scale = records::Face::side / length;
    const Point corner{truth.box.centre().x - length / 2, truth.box.centre().y - length / 2};
    cv::Mat source = bgr(*picture);
    double rest = scale;
    if (scale < 0.75) {
        const int smaller = std::max(1, cvRound(side * scale));
        cv::resize(source, source, {smaller, smaller}, 0, 0, cv::INTER_AREA);
        rest = scale * side / smaller;
    }
    cv::Mat square(records::Face::side, records::Face::side, CV_8UC3, result.bytes.data());
    cv::warpAffine(source, square,
                   cv::Matx23d(rest, 0, -corner.x * scale + 0.5 * rest - 0.5, 0, rest,
                               -corner.y * scale + 0.5 * rest - 0.5),
                   square.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT);
    auto to = result.numbers.begin();
    for (const double number :
         {double{label}, (truth.box.x - corner.x) * scale, (truth.box.y - corner.y) * scale,
          truth.box.width * scale, truth.box.height * scale, truth.yaw, truth.pitch, truth.roll})
        *to++ = static_cast<float>(number);
    for (const Point& point : truth.points) {
        *to++ = static_cast<float>((point.x - corner.x) * scale);
        *to++ = static_cast<float>((point.y - corner.y) * scale);
    }
    return result;
}

void PictureMaker::scene(std::uint64_t person, std::uint64_t other, int moments,
                         const std::function<void(const records::Scene&)>& take) {
    const Scene scene = randomScene(person, other, chance_);
    SceneFilm film(scene, cast_);
    const bool isLarge = chance_.between(0, 1) < 0.2;
    const TimeInterval frameTime(1.0 / (chance_.between(0, 1) < 0.5 ? 15 : 30));
    const TimeInterval start(chance_.between(0, 30));
    for (int i = 0; i < moments; ++i) {
        const TimeInterval running(i * 0.7);
        take(record(film.shoot({.at = start + running,
                                .running = running,
                                .frameTime = frameTime,
                                .width = isLarge ? 1280 : 640,
                                .height = isLarge ? 720 : 480}),
                    scene.light, chance_));
    }
}

}  // namespace marrowby
