// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/RectangleFinder.h"

#include "Platforms/Linux/Vision/BitmapMat.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <tuple>

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

namespace marrowby {

namespace {

/// Long edge of the working copy: outlines of the requested sizes are found there as well.
constexpr int workingLongEdge = 320;

using Quad = std::array<cv::Point2f, 4>;

double sideLength(const Quad& quad, std::size_t i) {
    return cv::norm(quad.at((i + 1) % 4) - quad.at(i));
}

bool hasRightAngles(const Quad& quad, double toleranceDegrees) {
    for (std::size_t i = 0; i < 4; ++i) {
        const cv::Point2f a = quad.at((i + 3) % 4) - quad.at(i);
        const cv::Point2f b = quad.at((i + 1) % 4) - quad.at(i);
        const double angle = std::atan2(std::abs(a.cross(b)), a.dot(b)) * 180 / std::numbers::pi;
        if (!(std::abs(angle - 90) <= toleranceDegrees)) return false;
    }
    return true;
}

/// Whether each pixel has an edge of one direction, by the way in which its brightness steps: to
/// the right or down.
struct Edges {
    cv::Mat rising;
    cv::Mat falling;
    cv::Mat any;
};

struct EdgeMaps {
    Edges upright;
    Edges level;
};

Edges edges(const cv::Mat& steps, const cv::Mat& isSteepest) {
    constexpr int leastSteepness = 40;
    const cv::Mat block = cv::Mat::ones(3, 3, CV_8U);
    Edges found;
    cv::dilate((steps >= leastSteepness) & isSteepest, found.rising, block);
    cv::dilate((steps <= -leastSteepness) & isSteepest, found.falling, block);
    found.any = found.rising | found.falling;
    return found;
}

EdgeMaps edgeMaps(const cv::Mat& grey) {
    cv::Mat across;
    cv::Mat down;
    cv::Sobel(grey, across, CV_16S, 1, 0);
    cv::Sobel(grey, down, CV_16S, 0, 1);
    const cv::Mat steepAcross = cv::abs(across);
    const cv::Mat steepDown = cv::abs(down);
    return {.upright = edges(across, steepAcross >= steepDown),
            .level = edges(down, steepDown >= steepAcross)};
}

const Edges& edgesAlong(cv::Point2f side, const EdgeMaps& maps) {
    return std::abs(side.x) < std::abs(side.y) ? maps.upright : maps.level;
}

/// Fraction of a side's part from `begin` to `end` (0…1) that lies in the map.
double share(cv::Point2f from, cv::Point2f to, const cv::Mat& map, float begin, float end) {
    const cv::Point2f step = to - from;
    const int samples = std::max(8, cvRound(cv::norm(step) * double(end - begin)));
    int hits = 0;
    for (int k = 0; k < samples; ++k) {
        const float along = begin + (end - begin) * (static_cast<float>(k) + 0.5F) / float(samples);
        const cv::Point p = from + step * along;
        const bool inside = p.x >= 0 && p.y >= 0 && p.x < map.cols && p.y < map.rows;
        if (inside && map.at<std::uint8_t>(p) != 0) ++hits;
    }
    return static_cast<double>(hits) / samples;
}

/// Fraction of a side, or of its part, that lies on an edge.
double seen(cv::Point2f from, cv::Point2f to, const EdgeMaps& maps, float begin = 0,
            float end = 1) {
    return share(from, to, edgesAlong(to - from, maps).any, begin, end);
}

/// The same for edges that all step from bright to dark, or all from dark to bright, as a border
/// does. A frame's end, a chin and a shoulder on one line do not.
double seenAsBorder(cv::Point2f from, cv::Point2f to, const EdgeMaps& maps, float begin = 0,
                    float end = 1) {
    const Edges& edges = edgesAlong(to - from, maps);
    return std::max(share(from, to, edges.rising, begin, end),
                    share(from, to, edges.falling, begin, end));
}

/// Fraction of the outline that lies on an edge, but at most 1.5 times that of the least visible
/// side: hands hide parts of it. Below `enough` it is only known to be less.
double confidence(const Quad& quad, const EdgeMaps& maps, std::size_t sides, double enough) {
    constexpr double mostOfLeast = 1.5;
    double least = 1;
    double length = 0;
    double covered = 0;
    for (std::size_t i = 0; i < sides; ++i) {
        const double visible = seen(quad.at(i), quad.at((i + 1) % 4), maps);
        least = std::min(least, visible);
        if (mostOfLeast * least < enough) return mostOfLeast * least;
        length += sideLength(quad, i);
        covered += visible * sideLength(quad, i);
    }
    return std::min(covered / length, mostOfLeast * least);
}

/// The outline's four corners; `nullopt` if it has another number.
std::optional<Quad> corners(const std::vector<cv::Point>& outline) {
    std::vector<cv::Point> hull;
    cv::convexHull(outline, hull);
    const double length = cv::arcLength(hull, true);
    for (const double tolerance : {0.02, 0.04, 0.06}) {
        std::vector<cv::Point> shape;
        cv::approxPolyDP(hull, shape, tolerance * length, true);
        if (shape.size() != 4) continue;
        Quad quad;
        std::ranges::copy(shape, quad.begin());
        return quad;
    }
    return std::nullopt;
}

/// Orders the corners in a circle from the lower-left one.
Quad fromLowerLeft(Quad quad) {
    std::ranges::sort(quad, {}, &cv::Point2f::x);
    if (quad[0].y < quad[1].y) std::swap(quad[0], quad[1]);
    if (quad[2].y > quad[3].y) std::swap(quad[2], quad[3]);
    return quad;
}

/// How visible the two sides are close to a corner.
double atCorner(const Quad& quad, std::size_t corner, const EdgeMaps& maps) {
    constexpr float near = 0.15F;
    const cv::Point2f& place = quad.at(corner);
    return std::min(seen(place, quad.at((corner + 1) % 4), maps, 0, near),
                    seen(place, quad.at((corner + 3) % 4), maps, 0, near));
}

/// Whether this is one object's outline. Lines of a frame, a shelf and shoulders form rectangles
/// too, but their sides do not reach the shoulders, which are not straight. A hand may hide one
/// upper and one lower corner. Corners from the lower-left one.
bool isWhole(const Quad& quad, const EdgeMaps& maps, bool isCut) {
    constexpr double leastOfTop = 0.75;
    constexpr double leastOfBottom = 0.8;
    // The height of a neck.
    constexpr double leastOfMiddle = 0.85;
    constexpr double leastOfCorner = 0.6;
    const auto [worse, better] = std::minmax({atCorner(quad, 1, maps), atCorner(quad, 2, maps)});
    if (seen(quad[1], quad[2], maps) < leastOfTop || better < leastOfCorner ||
        worse < leastOfCorner / 2) {
        return false;
    }
    if (isCut) return true;
    return seenAsBorder(quad[0], quad[3], maps) >= leastOfBottom &&
           seenAsBorder(quad[0], quad[3], maps, 0.25F, 0.75F) >= leastOfMiddle &&
           std::max(atCorner(quad, 0, maps), atCorner(quad, 3, maps)) >= leastOfCorner;
}

/// Whether a side continues past its end: directly (a longer board) or after a gap (a board partly
/// hidden).
bool goesOn(cv::Point2f from, cv::Point2f to, const EdgeMaps& maps) {
    constexpr double mostBeyond = 0.4;
    return seen(from, to, maps, 1.04F, 1.15F) > mostBeyond ||
           seen(from, to, maps, 1.05F, 1.25F) > mostBeyond;
}

/// Whether a cut-off object is held up and reaches the image's lower edge. Shoulders hide what is
/// behind a person even if only their top is in the image, and below a frame or within a door they
/// look like its sides; a thumb that holds a phone hides one side.
bool reachesLowerEdge(const Quad& quad, const EdgeMaps& maps) {
    constexpr double leastSeen = 0.6;
    constexpr float lowestFifth = 0.8F;
    constexpr float edge = 0.94F;
    constexpr double phonesAspect = 0.56;
    constexpr double leastOfBorder = 0.65;
    const auto sidesSeen = [&](float begin) {
        return int(seen(quad[1], quad[0], maps, begin) >= leastSeen) +
               int(seen(quad[2], quad[3], maps, begin) >= leastSeen);
    };
    if (sidesSeen(lowestFifth) < 1) return false;
    const double aspect = sideLength(quad, 1) / std::min(sideLength(quad, 0), sideLength(quad, 2));
    if (aspect <= phonesAspect) return sidesSeen(edge) >= 1;
    return sidesSeen(edge) == 2 && seenAsBorder(quad[1], quad[0], maps) >= leastOfBorder &&
           seenAsBorder(quad[2], quad[3], maps) >= leastOfBorder;
}

/// Whether four lines outline one object: its sides end at its corners and, if the image's lower
/// edge cuts it off, nobody in front hides it.
bool standsAlone(const Quad& quad, const EdgeMaps& maps, bool isCut) {
    if (isCut && !reachesLowerEdge(quad, maps)) return false;
    const std::size_t sides = isCut ? 3 : 4;
    for (std::size_t i = 0; i < sides; ++i) {
        const bool startsAtCut = isCut && i == 0;
        const bool endsAtCut = isCut && i == 2;
        const cv::Point2f& from = quad.at(i);
        const cv::Point2f& to = quad.at((i + 1) % 4);
        if (!startsAtCut && goesOn(to, from, maps)) return false;
        if (!endsAtCut && goesOn(from, to, maps)) return false;
    }
    return true;
}

/// A straight line and its visible length, pixels.
struct Line {
    cv::Point2f from;
    cv::Point2f to;
    double length = 0;

    [[nodiscard]] bool isUpright() const {
        return std::abs(to.x - from.x) < std::abs(to.y - from.y);
    }
    [[nodiscard]] double distance(const cv::Point2f& point) const {
        const cv::Point2f along = to - from;
        return std::abs(along.cross(point - from)) / cv::norm(along);
    }
};

/// The longest lines of one direction, after merging collinear segments.
std::vector<Line> longestLines(const std::vector<cv::Vec4f>& segments, bool upright) {
    constexpr double leastPiece = 8;
    constexpr double mostApart = 2;
    constexpr std::size_t most = 12;
    std::vector<Line> lines;
    for (const cv::Vec4f& s : segments) {
        const Line line{{s[0], s[1]}, {s[2], s[3]}, std::hypot(s[2] - s[0], s[3] - s[1])};
        if (line.isUpright() == upright && line.length >= leastPiece) lines.push_back(line);
    }
    std::ranges::sort(lines, std::ranges::greater{}, &Line::length);
    std::vector<Line> merged;
    for (const Line& line : lines) {
        const auto same = std::ranges::find_if(merged, [&](const Line& other) {
            return other.distance(line.from) <= mostApart && other.distance(line.to) <= mostApart;
        });
        if (same == merged.end()) {
            merged.push_back(line);
        } else {
            same->length += line.length;
        }
    }
    std::ranges::sort(merged, std::ranges::greater{}, &Line::length);
    if (merged.size() > most) merged.resize(most);
    return merged;
}

std::optional<cv::Point2f> crossing(const Line& a, const Line& b) {
    const cv::Point2f alongA = a.to - a.from;
    const cv::Point2f alongB = b.to - b.from;
    const double turn = alongA.cross(alongB);
    if (std::abs(turn) < 1e-3) return std::nullopt;
    return a.from + alongA * static_cast<float>((b.from - a.from).cross(alongB) / turn);
}

/// Corners from the lower-left one, so that the lower side is the last.
std::optional<Quad> corners(const Line& left, const Line& right, const Line& top,
                            const Line& bottom) {
    const auto lowerLeft = crossing(left, bottom);
    const auto upperLeft = crossing(left, top);
    const auto upperRight = crossing(right, top);
    const auto lowerRight = crossing(right, bottom);
    if (!lowerLeft || !upperLeft || !upperRight || !lowerRight) return std::nullopt;
    const Quad quad{*lowerLeft, *upperLeft, *upperRight, *lowerRight};
    if (!(quad[0].x < quad[3].x && quad[1].x < quad[2].x && quad[1].y < quad[0].y &&
          quad[2].y < quad[3].y)) {
        return std::nullopt;
    }
    return quad;
}

/// Whether size and proportions are those requested, in the working copy's pixels.
bool hasShape(const Quad& quad, const RectangleRequest& request, double leastSide) {
    const double across = (sideLength(quad, 0) + sideLength(quad, 2)) / 2;
    const double down = (sideLength(quad, 1) + sideLength(quad, 3)) / 2;
    const double shorter = std::min(across, down);
    const double aspect = shorter / std::max(across, down);
    return shorter >= leastSide && aspect >= request.minimumAspectRatio &&
           aspect <= request.maximumAspectRatio &&
           hasRightAngles(quad, request.quadratureToleranceDegrees);
}

std::vector<Quad> outlinedQuads(const cv::Mat& grey, double leastSide) {
    std::vector<Quad> quads;
    for (const double strength : {30.0, 80.0}) {
        cv::Mat edges;
        cv::Canny(grey, edges, strength, strength * 2);
        cv::dilate(edges, edges, cv::Mat::ones(3, 3, CV_8U));
        std::vector<std::vector<cv::Point>> outlines;
        cv::findContours(edges, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_SIMPLE);
        for (const auto& outline : outlines) {
            const cv::Rect bounds = cv::boundingRect(outline);
            if (std::max(bounds.width, bounds.height) < leastSide) continue;
            if (const auto quad = corners(outline)) quads.push_back(*quad);
        }
    }
    return quads;
}

struct FourLines {
    Quad quad;
    /// The lower side is the image's edge.
    bool isCut = false;
};

/// Candidates from straight lines: hands break an outline up, and an object close to the camera may
/// extend below the image.
std::vector<FourLines> linedQuads(const cv::Mat& grey) {
    std::vector<cv::Vec4f> segments;
    cv::createLineSegmentDetector(cv::LSD_REFINE_NONE, 1.0)->detect(grey, segments);
    const auto upright = longestLines(segments, true);
    auto level = longestLines(segments, false);
    const auto lowest = static_cast<float>(grey.rows - 1);
    level.push_back({{0, lowest}, {static_cast<float>(grey.cols), lowest}});
    std::vector<FourLines> found;
    for (const Line& left : upright) {
        for (const Line& right : upright) {
            if (left.from.x >= right.from.x) continue;
            for (const Line& top : level) {
                for (const Line& bottom : level) {
                    if (top.from.y >= bottom.from.y) continue;
                    const auto quad = corners(left, right, top, bottom);
                    if (quad) found.push_back({*quad, &bottom == &level.back()});
                }
            }
        }
    }
    return found;
}

}  // namespace

std::optional<std::vector<Rect>> findRectangles(const Bitmap& image,
                                                const RectangleRequest& request) {
    const auto bgr = bgrMat(image);
    if (!bgr) return std::nullopt;
    const double scale =
        std::min(1.0, workingLongEdge / static_cast<double>(std::max(bgr->cols, bgr->rows)));
    cv::Mat small;
    cv::resize(*bgr, small, {}, scale, scale, cv::INTER_AREA);
    cv::cvtColor(small, small, cv::COLOR_BGR2GRAY);
    cv::GaussianBlur(small, small, {3, 3}, 0);

    struct Found {
        Rect box;
        bool isCut;
        double confidence;
    };
    std::vector<Found> found;
    const double leastSide = request.minimumSize * std::min(small.cols, small.rows);
    const cv::Rect2d frame(0, 0, bgr->cols, bgr->rows);
    const EdgeMaps maps = edgeMaps(small);
    const auto consider = [&](const Quad& quad, bool isCut, std::size_t sides) {
        // The cheapest question first: there are thousands of them.
        if (!hasShape(quad, request, leastSide)) return;
        const double share = confidence(quad, maps, sides, request.minimumConfidence);
        if (!(share >= request.minimumConfidence) || !isWhole(quad, maps, isCut) ||
            !standsAlone(quad, maps, isCut)) {
            return;
        }
        const auto [left, right] = std::ranges::minmax(quad, {}, &cv::Point2f::x);
        const auto [top, bottom] = std::ranges::minmax(quad, {}, &cv::Point2f::y);
        const cv::Rect2d box =
            cv::Rect2d(double{left.x} / scale, double{top.y} / scale,
                       double{right.x - left.x} / scale, double{bottom.y - top.y} / scale) &
            frame;
        found.push_back({{box.x, box.y, box.width, box.height}, isCut, share});
    };

    constexpr float cutMargin = 4;
    for (const Quad& outline : outlinedQuads(small, leastSide)) {
        const Quad quad = fromLowerLeft(outline);
        const bool isCut =
            std::max(quad[0].y, quad[3].y) > static_cast<float>(small.rows) - cutMargin;
        consider(quad, isCut, 4);
    }
    for (const auto& [quad, isCut] : linedQuads(small))
        consider(quad, isCut, isCut ? 3 : 4);

    // A full outline ranks before a cut-off one. Of overlapping candidates that share sides with
    // another object, the best visible wins.
    std::ranges::sort(found, {}, [](const Found& one) {
        return std::tuple(one.isCut, -one.confidence, -one.box.area(), one.box.x, one.box.y);
    });
    std::vector<Rect> boxes;
    for (const Found& one : found) {
        if (one.isCut && !found.front().isCut) break;
        const bool isCovered = std::ranges::any_of(boxes, [&](const Rect& better) {
            return intersection(better, one.box).area() >
                   0.5 * std::min(better.area(), one.box.area());
        });
        if (!isCovered) boxes.push_back(one.box);
    }
    std::ranges::sort(boxes, std::ranges::greater{}, &Rect::area);
    const auto most =
        static_cast<std::size_t>(std::max<std::int64_t>(request.maximumObservations, 0));
    if (boxes.size() > most) boxes.resize(most);
    return boxes;
}

}  // namespace marrowby
