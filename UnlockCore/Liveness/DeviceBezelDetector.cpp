// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Liveness/DeviceBezelDetector.h"

#include <algorithm>

namespace marrowby::devicebezeldetector {

namespace {

constexpr RectangleRequest request{.minimumConfidence = 0.6,
                                   .minimumSize = 0.15,
                                   .maximumObservations = 3,
                                   .minimumAspectRatio = 0.35,
                                   .maximumAspectRatio = 1.0,
                                   .quadratureToleranceDegrees = 30};

}  // namespace

Rect head(const Rect& faceBox) {
    constexpr double above = 0.3;
    constexpr double beside = 0.1;
    constexpr double below = 0.08;
    return {faceBox.x - beside * faceBox.width, faceBox.y - above * faceBox.height,
            (1 + 2 * beside) * faceBox.width, (1 + above + below) * faceBox.height};
}

bool isHeldUp(const Rect& rectangle, const Rect& faceBox, const Size& picture) {
    // Measured in scenes. Widths in face widths: devices that the picture cuts off 1.2 to 1.8,
    // prints 2.1 to 3; doors and curtains that go on below the picture 3 and more. Shorter side by
    // longer one: whole devices and prints 0.43 to 0.81 (an 8 x 10 print has 0.8), a door and a
    // desk that denied somebody 0.81. Width by visible height, cut off: devices and prints at most
    // 0.88, mostly up to 0.8; doors and curtains that denied somebody 0.87 to 0.9.
    constexpr double widestWhole = 4;
    constexpr double widestCut = 3;
    constexpr double squarestWhole = 0.8;
    constexpr double widestCutShape = 0.85;
    constexpr double cutMargin = 0.02;
    const bool isCut = rectangle.maxY() > (1 - cutMargin) * picture.height;
    if (isCut) {
        return rectangle.width <= widestCut * faceBox.width &&
               rectangle.width <= widestCutShape * rectangle.height;
    }
    const auto [shorter, longer] = std::minmax(rectangle.width, rectangle.height);
    return rectangle.width <= widestWhole * faceBox.width && shorter <= squarestWhole * longer;
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
        const Rect inPixels{box.x * width, box.y * height, box.width * width, box.height * height};
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
