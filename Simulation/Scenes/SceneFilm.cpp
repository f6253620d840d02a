// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/SceneFilm.h"

#include "Simulation/Scenes/Hands.h"
#include "Simulation/Scenes/Room.h"
#include "Simulation/Scenes/SheetPainter.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

/// From the first row's reading to the last one's.
constexpr TimeInterval readout{0.018};
/// Pixels; less movement is not blurred.
constexpr double visibleMotion = 0.4;

/// Of the camera that took what a prop shows, in widths of its pictures.
constexpr double photoFocalLength = 845.0 / 450;

PersonPose poseOf(const Placement& head) {
    return facingCamera(head.position, head.yaw, head.pitch, head.roll);
}

Point projected(const PinholeCamera& camera, const Vector3& place) {
    const double depth = std::max(double{place.z}, 0.05);
    return {.x = camera.centreX + camera.focalLength * double{place.x} / depth,
            .y = camera.centreY + camera.focalLength * double{place.y} / depth};
}

/// Where the tip of a nose is in the picture, about.
Point nose(const PinholeCamera& camera, const Placement& head) {
    constexpr float ahead = -0.10F;
    return projected(camera, head.position + axes(head)[2] * ahead);
}

Point operator-(const Point& a, const Point& b) {
    return {.x = a.x - b.x, .y = a.y - b.y};
}

/// How much of a pixel lies within the outline, by whether parts of it do.
bool isWithin(std::span<const Point> outline, double x, double y) {
    bool inside = false;
    for (std::size_t i = 0, j = outline.size() - 1; i < outline.size(); j = i++) {
        const Point& a = outline[i];
        const Point& b = outline[j];
        if ((a.y > y) != (b.y > y) && x < (b.x - a.x) * (y - a.y) / (b.y - a.y) + a.x) {
            inside = !inside;
        }
    }
    return inside;
}

double part(std::span<const Point> outline, int x, int y) {
    double hits = 0;
    for (const double right : {0.25, 0.75}) {
        for (const double down : {0.25, 0.75}) {
            if (isWithin(outline, x + right, y + down)) hits += 0.25;
        }
    }
    return hits;
}

/// The outline enlarged by half, as scissors leave it.
std::vector<Point> widened(std::span<const Point> outline) {
    Point middle;
    for (const Point& point : outline) {
        middle.x += point.x / static_cast<double>(outline.size());
        middle.y += point.y / static_cast<double>(outline.size());
    }
    std::vector<Point> wide;
    for (const Point& point : outline) {
        wide.push_back({.x = middle.x + (point.x - middle.x) * 1.5,
                        .y = middle.y + (point.y - middle.y) * 1.5});
    }
    return wide;
}

/// Cuts the face out, forehead included.
void cutOut(LinearImage& image, const FaceTruth& face, bool hasEyeHoles) {
    const auto points = std::span(face.points);
    std::vector<Point> outline(points.begin(), points.begin() + 33);
    // Over the forehead, as far above the brows as the eyes are below them and twice that again.
    const Point& nosePoint = points[51];
    for (int i = 0; i <= 8; ++i) {
        const double t = i / 8.0;
        const Point& right = points[32];
        const Point& left = points[0];
        const double rise = std::sin(t * 3.14159265) * (points[57].y - nosePoint.y) * 1.5;
        outline.push_back(
            {.x = right.x + (left.x - right.x) * t, .y = right.y + (left.y - right.y) * t - rise});
    }
    const auto leftHole = widened(points.subspan(60, 8));
    const auto rightHole = widened(points.subspan(68, 8));
    for (int y = 0; y < image.height; ++y) {
        for (int x = 0; x < image.width; ++x) {
            double kept = part(outline, x, y);
            if (hasEyeHoles && kept > 0) kept *= 1 - part(leftHole, x, y) - part(rightHole, x, y);
            image.coverage[image.index(x, y)] = static_cast<float>(std::max(kept, 0.0));
        }
    }
}

/// The first row that shows something, and the one after the last.
std::pair<int, int> coveredRows(const LinearImage& layer) {
    const auto isCovered = [](float coverage) { return coverage > 0; };
    const auto begin = std::ranges::find_if(layer.coverage, isCovered);
    const auto end = std::find_if(layer.coverage.rbegin(), layer.coverage.rend(), isCovered);
    const auto first = (begin - layer.coverage.begin()) / layer.width;
    const auto after = (layer.coverage.rend() - end + layer.width - 1) / layer.width;
    return {static_cast<int>(first), static_cast<int>(after)};
}

/// The layer on top of the image, moving by so much while the shutter is open.
void blurInto(LinearImage& image, const LinearImage& layer, const Point& motion) {
    const int taps = std::clamp(static_cast<int>(std::hypot(motion.x, motion.y)) + 2, 2, 24);
    struct Tap {
        int x = 0;
        int y = 0;
    };
    std::vector<Tap> shifts;
    for (int i = 0; i < taps; ++i) {
        const double along = static_cast<double>(i) / (taps - 1);
        shifts.push_back({.x = static_cast<int>(std::lround(motion.x * along)),
                          .y = static_cast<int>(std::lround(motion.y * along))});
    }
    const float weight = 1 / static_cast<float>(taps);
    const auto [first, last] = coveredRows(layer);
    const int reach = static_cast<int>(std::abs(motion.y)) + 1;
    for (int y = std::max(first - reach, 0); y < std::min(last + reach, image.height); ++y) {
        for (int x = 0; x < image.width; ++x) {
            float covered = 0;
            Vector3 colour;
            for (const Tap& shift : shifts) {
                const int fromX = x - shift.x;
                const int fromY = y - shift.y;
                if (fromX < 0 || fromX >= image.width || fromY < 0 || fromY >= image.height) {
                    continue;
                }
                const std::size_t from = layer.index(fromX, fromY);
                if (layer.coverage[from] <= 0) continue;
                covered += layer.coverage[from];
                const float* rgb = &layer.rgb[from * 3];
                colour = colour + Vector3{rgb[0], rgb[1], rgb[2]};
            }
            if (covered <= 0) continue;
            float* to = image.pixel(x, y);
            const float left = 1 - covered * weight;
            to[0] = to[0] * left + colour.x * weight;
            to[1] = to[1] * left + colour.y * weight;
            to[2] = to[2] * left + colour.z * weight;
        }
    }
}

/// Draws something that moves by so much while the shutter is open.
template <typename Draw>
void drawMoving(LinearImage& image, const Point& motion, Draw&& draw) {
    if (std::hypot(motion.x, motion.y) <= visibleMotion) return draw(image);
    LinearImage layer(image.width, image.height);
    draw(layer);
    blurInto(image, layer, motion);
}

/// The ground truth of a shown face, moved to where the sheet shows it.
FaceTruth onSheet(const FaceTruth& face, const PlacedSheet& placed, const TextureFit& fit,
                  const PinholeCamera& camera) {
    const auto moved = [&](const Point& point) {
        return placed.project(camera,
                              (static_cast<float>(point.x) - fit.middleX) / fit.pixelsPerMetre,
                              (static_cast<float>(point.y) - fit.middleY) / fit.pixelsPerMetre);
    };
    FaceTruth result = face;
    std::ranges::transform(face.points, result.points.begin(), moved);
    std::ranges::transform(face.pupils, result.pupils.begin(), moved);
    const std::array corners{moved({face.box.x, face.box.y}), moved({face.box.maxX(), face.box.y}),
                             moved({face.box.x, face.box.maxY()}),
                             moved({face.box.maxX(), face.box.maxY()})};
    const auto [left, right] = std::ranges::minmax(corners, {}, &Point::x);
    const auto [top, bottom] = std::ranges::minmax(corners, {}, &Point::y);
    result.box = {left.x, top.y, right.x - left.x, bottom.y - top.y};
    return result;
}

}  // namespace

/// One picture being made.
struct SceneFilm::Shooting {
    SheetView view;
    LinearImage image;
    TimeInterval at{};
    SceneTruth truth = {};
};

SceneFilm::SceneFilm(Scene scene, Cast& cast, const Optics& optics)
    : scene_(std::move(scene)),
      light_(light(scene_.light)),
      optics_(optics),
      sensor_(scene_.seed),
      skin_(skin(scene_.seed)),
      shown_(scene_.props.size()) {
    for (const Actor& actor : scene_.actors)

        people_.try_emplace(actor.person, cast.person(actor.person));
    for (const Prop& prop : scene_.props)

        people_.try_emplace(prop.person, cast.person(prop.person));
}

SceneFilm::Frame SceneFilm::shoot(const Moment& moment) {
    const auto camera = PinholeCamera::webcam(moment.width, moment.height);
    if (!room_ || room_->width != moment.width || room_->height != moment.height) {
        room_ = drawRoom(moment.width, moment.height, camera, light_, scene_.seed, scene_.backdrop);
    }
    const bool isFirst = runs_ == 0 || moment.running <= TimeInterval(0);
    if (isFirst) exposure_.begin(scene_.seed + runs_++);
    Shooting shooting{.view = {.camera = camera,
                               .optics = optics_,
                               .shutter = {.opens = moment.at,
                                           .open = exposure_.open(),
                                           .perRow = readout / moment.height},
                               .light = light_},
                      .image = *room_,
                      .at = moment.at};
    shooting.truth.at = moment.at;

    // Painted from far to near.
    using Work = std::variant<std::pair<const Actor*, Stance>, std::pair<std::size_t, Placement>>;
    std::vector<std::pair<float, Work>> works;
    for (const Actor& actor : scene_.actors) {
        const Stance stance = actor.plays(moment.at);
        if (stance.isThere) works.emplace_back(stance.head.position.z, std::pair(&actor, stance));
    }
    for (std::size_t i = 0; i < scene_.props.size(); ++i) {
        const Placement place = scene_.props[i].moves.at(moment.at);
        works.emplace_back(place.position.z, std::pair(i, place));
    }
    std::ranges::sort(works, std::greater(), &std::pair<float, Work>::first);
    for (const auto& [distance, work] : works) {
        if (const auto* acting = std::get_if<0>(&work)) {
            drawActor(*acting->first, acting->second, shooting);
        } else {
            const auto& [index, place] = std::get<1>(work);
            drawProp(index, place, shooting);
        }
    }

    if (scene_.hasDesk) drawDesk(shooting.image, camera, light_, scene_.seed);

    const TimeInterval passed = isFirst ? TimeInterval(0) : moment.running - ranFor_;
    ranFor_ = moment.running;
    exposure_.follow(meteredBrightness(shooting.image), passed, moment.frameTime);
    std::vector<float> rowLight;
    if (light_.flickerDepth > 0) {
        shooting.view.shutter.open = exposure_.open();
        for (int y = 0; y < moment.height; ++y) {
            rowLight.push_back(
                swing(shooting.view.shutter, y, light_.flickerDepth, light_.flickerRate));
        }
    }
    return {.picture = sensor_.develop(shooting.image, exposure_, rowLight),
            .truth = std::move(shooting.truth)};
}

void SceneFilm::drawActor(const Actor& actor, const Stance& stance, Shooting& shooting) {
    const PinholeCamera& camera = shooting.view.camera;
    const Stance after = actor.plays(shooting.at + shooting.view.shutter.open);
    const Point motion = nose(camera, after.head) - nose(camera, stance.head);
    drawMoving(shooting.image, motion, [&](LinearImage& image) {
        shooting.truth.people.push_back(renderer_.draw(image, camera, people_.at(actor.person),
                                                       poseOf(stance.head), stance.expression,
                                                       light_.people));
    });
}

void SceneFilm::drawProp(std::size_t index, const Placement& place, Shooting& shooting) {
    const Prop& prop = scene_.props[index];
    std::optional<Picture>& shown = shown_[index];
    if (!shown || prop.isReplay) shown = photograph(prop, shooting.at);
    const PinholeCamera& camera = shooting.view.camera;
    const PlacedSheet placed(prop.sheet, place);
    const Placement after = prop.moves.at(shooting.at + shooting.view.shutter.open);
    const Point motion = projected(camera, after.position) - projected(camera, place.position);
    shooting.view.motion = motion;
    drawMoving(shooting.image, motion, [&](LinearImage& image) {
        const auto paint = [&](const std::vector<HandPart>& parts) {
            for (const HandPart& each : parts) {
                paintSheet(image, shooting.view, PlacedSheet(each.sheet, each.place), skin_);
            }
        };
        if (prop.isHandHeld) paint(armsBehind(placed, place));
        paintSheet(image, shooting.view, placed, shown->texture);
        if (prop.isHandHeld) paint(fingersBefore(placed, place));
    });
    const TextureFit fit(prop.sheet, shown->texture.width(), shown->texture.height());
    shooting.truth.heldUp.push_back({.kind = prop.kind,
                                     .isReplay = prop.isReplay,
                                     .corners = placed.corners(camera),
                                     .face = onSheet(shown->face, placed, fit, camera)});
}

SceneFilm::Picture SceneFilm::photograph(const Prop& prop, TimeInterval at) {
    const int width = prop.pixelsWide;
    const int height = width * 4 / 3;
    const PinholeCamera camera{
        .focalLength = photoFocalLength * width, .centreX = width / 2.0, .centreY = height / 2.0};
    // Taken elsewhere, in good light.
    const SceneLight good = light(LightKind::normal);
    if (!photoRoom_ || photoRoom_->width != width) {
        photoRoom_ = drawRoom(width, height, camera, good, prop.person + 17, Backdrop::furniture);
    }
    LinearImage image = *photoRoom_;
    const Stance stance = prop.plays(at);
    const FaceTruth face = renderer_.draw(image, camera, people_.at(prop.person),
                                          poseOf(stance.head), stance.expression, good.people);
    if (prop.kind == PropKind::cutOut) {
        cutOut(image, face, prop.hasEyeHoles);
    } else {
        std::ranges::fill(image.coverage, 1.0F);
    }
    return {.texture = Texture(std::move(image)), .face = face};
}

}  // namespace marrowby
