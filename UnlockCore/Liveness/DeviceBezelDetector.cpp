#include "UnlockCore/Liveness/DeviceBezelDetector.h"

#include <cmath>

namespace marrowby::devicebezeldetector {

namespace {

constexpr RectangleRequest request{.minimumConfidence = 0.6,
                                   .minimumSize = 0.15,
                                   .maximumObservations = 3,
                                   .minimumAspectRatio = 0.35,
                                   .maximumAspectRatio = 1.0,
                                   .quadratureToleranceDegrees = 30};

Point operator-(const Point& a, const Point& b) {
    return {a.x - b.x, a.y - b.y};
}

/// The middle of its upper side: the lower one may be the picture's.
Point place(const Rect& rectangle) {
    return {rectangle.x + rectangle.width / 2, rectangle.y};
}

/// Whether the newest rectangle went where the face did since the face was farthest from where it
/// is now. In parts of the face's width.
bool movedAlong(std::span<const Sighting> sightings) {
    constexpr double leastMotion = 0.03;
    constexpr double mostLag = 0.5;
    constexpr double mostGrowth = 0.08;
    const Sighting& newest = sightings.back();
    double farthest = leastMotion * newest.face.width;
    bool isAlong = false;
    for (const Sighting& earlier : sightings) {
        const double growth = earlier.rectangle.width / newest.rectangle.width - 1;
        const double motion = distance(earlier.face.centre(), newest.face.centre());
        if (std::abs(growth) > mostGrowth || motion < farthest) continue;
        farthest = motion;
        const Point face = newest.face.centre() - earlier.face.centre();
        const Point frame = place(newest.rectangle) - place(earlier.rectangle);
        isAlong = distance(face, frame) <= mostLag * motion;
    }
    return isAlong;
}

}  // namespace

Rect head(const Rect& faceBox) {
    constexpr double above = 0.3;
    constexpr double beside = 0.1;
    return {faceBox.x - beside * faceBox.width, faceBox.y - above * faceBox.height,
            (1 + 2 * beside) * faceBox.width, (1 + above) * faceBox.height};
}

bool isHeldUp(std::span<const Sighting> sightings, const Size& picture) {
    // Seen in scenes, in widths of the face: devices 1.2 to 1.8 where the picture cuts them off,
    // prints 2.1 to 2.7; doors, shelves and curtains 1.75 and more.
    constexpr double widestWhole = 4;
    constexpr double widestSurelyHeld = 1.7;
    constexpr double widestCut = 3;
    constexpr double cutMargin = 0.02;
    if (sightings.empty()) return false;
    const Sighting& newest = sightings.back();
    const double unit = newest.face.width;
    const double width = newest.rectangle.width / unit;
    if (newest.rectangle.maxY() <= (1 - cutMargin) * picture.height) return width <= widestWhole;
    return width <= widestSurelyHeld || (width <= widestCut && movedAlong(sightings));
}

std::expected<std::optional<Observation>, std::string> detect(const Bitmap& image,
                                                              const Rect& faceBox,
                                                              FaceVision& vision) {
    const auto boxes = vision.rectangles(image, request);
    if (!boxes) return std::unexpected(boxes.error());
    const double width = image.width();
    const double height = image.height();
    std::optional<Rect> largest;
    for (const Rect& box : *boxes) {
        const Rect inPixels{box.x * width, (1 - box.y) * height - box.height * height,
                            box.width * width, box.height * height};
        if (!largest || inPixels.area() > largest->area()) largest = inPixels;
    }
    if (!largest) return std::nullopt;
    return Observation{*largest, overlapFraction(faceBox, *largest)};
}

std::optional<double> overlapFraction(const Rect& a, const Rect& b) {
    const double area = a.area();
    if (!(area > 0)) return std::nullopt;
    return intersection(a, b).area() / area;
}

}  // namespace marrowby::devicebezeldetector
