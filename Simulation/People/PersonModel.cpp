// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/PersonModel.h"

#include "Simulation/People/Fields.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace marrowby {

using namespace fields;

namespace {

constexpr float pi = std::numbers::pi_v<float>;

class Lines {
  public:
    explicit Lines(float from) : values_{from} {}
    /// Cells of about `step` up to there.
    Lines& to(float end, float step) {
        const float start = values_.back();
        const int count = std::max(1, static_cast<int>(std::ceil((end - start) / step)));
        for (int i = 1; i <= count; ++i)
            values_.push_back(
                std::lerp(start, end, static_cast<float>(i) / static_cast<float>(count)));
        return *this;
    }
    operator std::vector<float>() { return std::move(values_); }  // NOLINT: ends the chain

  private:
    std::vector<float> values_;
};

/// Fine where the face is.
SurfaceMesh::Grid grid(const PersonTraits& traits) {
    return {.x = Lines(-270)
                     .to(-120, 14)
                     .to(-84, 5)
                     .to(-54, 2.6F)
                     .to(54, 1.5F)
                     .to(84, 2.6F)
                     .to(120, 5)
                     .to(270, 12),
            .y = Lines(-900)
                     .to(-300, 25)
                     .to(-190, 9)
                     .to(-135, 3.5F)
                     .to(traits.chinY - 6, 2.2F)
                     .to(36, 1.4F)
                     .to(75, 2.4F)
                     .to(185, 4),
            .z = Lines(-270)
                     .to(-130, 7)
                     .to(-60, 4)
                     .to(-28, 2.6F)
                     .to(traits.noseTipZ + 6, 1.5F)
                     .to(70, 6)};
}

/// The distance on a coarse grid, for light that only needs to know about large things.
class CoarseDistance {
  public:
    explicit CoarseDistance(const HeadShape& shape) {
        values_.reserve(std::size_t{countX} * countY * countZ);
        for (int z = 0; z < countZ; ++z) {
            for (int y = 0; y < countY; ++y) {
                for (int x = 0; x < countX; ++x) {
                    values_.push_back(shape.distance(origin + Vector3{static_cast<float>(x),
                                                                      static_cast<float>(y),
                                                                      static_cast<float>(z)} *
                                                                  step));
                }
            }
        }
    }

    [[nodiscard]] float at(const Vector3& p) const {
        const Vector3 g = (p - origin) * (1 / step);
        const float gx = std::clamp(g.x, 0.F, countX - 1.01F);
        const float gy = std::clamp(g.y, 0.F, countY - 1.01F);
        const float gz = std::clamp(g.z, 0.F, countZ - 1.01F);
        const auto x = static_cast<std::size_t>(gx);
        const auto y = static_cast<std::size_t>(gy);
        const auto z = static_cast<std::size_t>(gz);
        const float tx = gx - static_cast<float>(x);
        const float ty = gy - static_cast<float>(y);
        const float tz = gz - static_cast<float>(z);
        const float* v = &values_[(z * countY + y) * countX + x];
        const auto line = [&](std::size_t i) { return v[i] + (v[i + 1] - v[i]) * tx; };
        const float low = line(0) + (line(countX) - line(0)) * ty;
        constexpr std::size_t slice = std::size_t{countX} * countY;
        const float high = line(slice) + (line(slice + countX) - line(slice)) * ty;
        return low + (high - low) * tz;
    }

  private:
    static constexpr float step = 9;
    static constexpr Vector3 origin{.x = -261, .y = -333, .z = -243};
    static constexpr int countX = 59;
    static constexpr int countY = 58;
    static constexpr int countZ = 33;
    std::vector<float> values_;
};

}  // namespace

PersonModel::PersonModel(std::uint64_t seed) : traits(seed) {
    addBody();
    bakeLight();
    ranges.push_back({Part::body, triangles.size()});
    addEyes();
    ranges.push_back({Part::eye, triangles.size()});
    if (traits.glasses != PersonTraits::GlassesStyle::none) addGlasses();
    ranges.push_back({Part::glasses, triangles.size()});
    findAnchors();
}

PersonModel::Motion PersonModel::motion(const Vector3& p) const {
    Motion result;
    // Below the line of the lips; sharply between them, softly beside them.
    const float below = shape.mouthLine(p.x) - p.y;
    const float along = std::min(1.F, std::abs(p.x) / traits.mouthWidth);
    const float behind = smoothstep(14, 26, traits.mouthZ - p.z - 0.0165F * p.x * p.x);
    result.jaw = std::lerp(smoothstep(-14, 14, below), smoothstep(-0.4F, 0.4F, below),
                           (1 - along * along) * (1 - behind)) *
                 smoothstep(traits.chinY - 50, traits.chinY - 8, p.y) * smoothstep(-95, -55, p.z);

    const float side = p.x < 0 ? -1.F : 1.F;
    const Vector3 r = p - shape.eye(side);
    const float dx = r.x * side;
    if (std::abs(dx) < traits.eyeWidth + 3 && std::abs(r.y) < 18 && r.z > 0 &&
        length(r) < traits.eyeRadius + 7) {
        const auto edges = shape.lids(dx);
        const float depth =
            std::sqrt(std::max(20.F, traits.eyeRadius * traits.eyeRadius - dx * dx));
        const auto angle = [&](float y) { return std::asin(std::clamp(y / depth, -1.F, 1.F)); };
        const float upper = angle(edges.upper);
        const float lower = angle(edges.lower);
        const float shut = lower + 0.18F * (upper - lower);
        const float here = angle(r.y);
        const float sides = smoothstep(traits.eyeWidth + 3, traits.eyeWidth - 1, std::abs(dx));
        if (r.y > (edges.upper + edges.lower) * 0.5F) {
            const float fold = angle(edges.crease + 2.5F);
            const float share = std::clamp((fold - here) / std::max(0.08F, fold - upper), 0.F, 1.F);
            result.lid = (upper - shut) * share * sides;
        } else {
            const float share = smoothstep(lower - 0.5F, lower, here);
            result.lid = (lower - shut) * share * sides;
        }
    }
    return result;
}

void PersonModel::addBody() {
    SurfaceMesh mesh = SurfaceMesh::extracted(
        grid(traits), [this](const Vector3& p) { return shape.distance(p); });
    // Coarsened behind the face, which is not visible.
    mesh.coarsen([this](const Vector3& p) {
        if (p.y < traits.chinY - 60) return p.y < -240 ? 16.F : 6.F;
        const bool isBehind = p.z < -66 && std::abs(p.x) < traits.skullWidth - 9;
        return isBehind || p.z < -135 ? 5.5F : 0.F;
    });
    triangles = std::move(mesh.triangles);
    vertices.reserve(mesh.points.size());
    for (Vector3 p : mesh.points) {
        // The gradient from four corners of a tetrahedron, and one step onto the surface.
        constexpr float e = 0.35F;
        const float a = shape.distance(p + Vector3{e, -e, -e});
        const float b = shape.distance(p + Vector3{-e, -e, e});
        const float c = shape.distance(p + Vector3{-e, e, -e});
        const float d = shape.distance(p + Vector3{e, e, e});
        const Vector3 gradient =
            Vector3{a - b - c + d, -a - b + c + d, -a + b - c + d} * (1 / (4 * e));
        const Vector3 normal = normalized(gradient);
        const float value = (a + b + c + d) * 0.25F;
        p = p - normal * std::clamp(value / std::max(0.4F, length(gradient)), -0.6F, 0.6F);
        vertices.push_back({.position = p,
                            .normal = normal,
                            .surface = shape.surface(p),
                            .headWeight = smoothstep(-185, -112, p.y + 0.25F * (p.z + 95)),
                            .motion = motion(p)});
    }
}

void PersonModel::bakeLight() {
    const CoarseDistance coarse(shape);
    constexpr int directionCount = 40;
    std::array<Vector3, directionCount> directions;
    for (int i = 0; i < directionCount; ++i) {
        // Evenly over the sphere along a spiral.
        const float y = 1 - (2 * static_cast<float>(i) + 1) / directionCount;
        const float around = static_cast<float>(i) * 2.39996323F;
        const float r = std::sqrt(1 - y * y);
        directions[static_cast<std::size_t>(i)] = {r * std::cos(around), y, r * std::sin(around)};
    }
    for (Vertex& v : vertices) {
        if (v.position.y < -320) continue;
        const Vector3 start = v.position + v.normal * 5;
        std::array<float, directionCount> seen{};
        float sum = 0;
        float weights = 0;
        Vector3 mean;
        for (std::size_t i = 0; i < directionCount; ++i) {
            const float facing = dot(v.normal, directions[i]);
            if (facing < 0.05F) continue;
            float open = 1;
            float t = 7;
            for (int ring = 0; ring < 7; ++ring, t *= 1.55F) {
                const float d = coarse.at(start + directions[i] * t);
                open = std::min(open, smoothstep(-0.16F * t, 0.16F * t, d));
                if (open <= 0) break;
            }
            seen[i] = open;
            sum += open * facing;
            weights += facing;
            mean = mean + directions[i] * facing;
        }
        v.openness = sum / weights;
        mean = mean * (1 / weights);
        for (std::size_t i = 0; i < directionCount; ++i) {
            const float facing = dot(v.normal, directions[i]);
            if (facing < 0.05F) continue;
            v.openTo = v.openTo +
                       (directions[i] - mean) * ((seen[i] - v.openness) * facing * 4.5F / weights);
        }
        const float near = shape.distance(v.position + v.normal * 2.5F) / 2.5F;
        const float wider = shape.distance(v.position + v.normal * 8) / 8;
        v.openness *= std::clamp(0.45F + 0.55F * near, 0.25F, 1.F) *
                      std::clamp(0.45F + 0.55F * wider, 0.3F, 1.F);
    }
}

void PersonModel::addEyes() {
    constexpr std::uint32_t columns = 20;
    constexpr std::uint32_t rows = 14;
    for (const float side : {-1.F, 1.F}) {
        const auto first = static_cast<std::uint32_t>(vertices.size());
        for (std::uint32_t row = 0; row <= rows; ++row) {
            for (std::uint32_t column = 0; column <= columns; ++column) {
                const float yaw = (static_cast<float>(column) / columns - 0.5F) * pi * 0.98F;
                const float lift = (static_cast<float>(row) / rows - 0.5F) * pi * 0.7F;
                const Vector3 out{std::sin(yaw) * std::cos(lift), std::sin(lift),
                                  std::cos(yaw) * std::cos(lift)};
                vertices.push_back({.position = shape.eye(side) + out * traits.eyeRadius,
                                    .normal = out,
                                    .surface = {.colour = {.x = 0.72F, .y = 0.69F, .z = 0.66F},
                                                .strandU = side,
                                                .cloth = -10},
                                    .openness = 0.75F});
            }
        }
        for (std::uint32_t row = 0; row < rows; ++row) {
            for (std::uint32_t column = 0; column < columns; ++column) {
                const std::uint32_t i = first + row * (columns + 1) + column;
                const std::uint32_t above = i + columns + 1;
                triangles.push_back({i, i + 1, above + 1});
                triangles.push_back({i, above + 1, above});
            }
        }
    }
}

void PersonModel::addTube(const std::vector<Vector3>& line, float radius, bool isClosed) {
    constexpr std::uint32_t sides = 7;
    const auto first = static_cast<std::uint32_t>(vertices.size());
    const auto count = static_cast<std::uint32_t>(line.size());
    if (count < 2) return;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t before = i > 0 ? i - 1 : (isClosed ? count - 1 : 0);
        const std::size_t after = i + 1 < count ? i + 1 : (isClosed ? 0 : i);
        const Vector3 along = normalized(line[after] - line[before]);
        const Vector3 up = std::abs(along.z) > 0.7F ? Vector3{.x = 0, .y = 1, .z = 0}
                                                    : Vector3{.x = 0, .y = 0, .z = 1};
        const Vector3 u = normalized(cross(up, along));
        const Vector3 v = cross(along, u);
        for (std::uint32_t k = 0; k < sides; ++k) {
            const float a = 2 * pi * static_cast<float>(k) / sides;
            const Vector3 out = u * std::cos(a) + v * std::sin(a);
            vertices.push_back({.position = line[i] + out * radius,
                                .normal = out,
                                .surface = {.colour = traits.rimColour, .cloth = -10},
                                .openness = 0.9F});
        }
    }
    const std::uint32_t segments = isClosed ? count : count - 1;
    for (std::uint32_t i = 0; i < segments; ++i) {
        const std::uint32_t here = first + i * sides;
        const std::uint32_t next = first + ((i + 1) % count) * sides;
        for (std::uint32_t k = 0; k < sides; ++k) {
            const std::uint32_t l = (k + 1) % sides;
            triangles.push_back({here + k, here + l, next + l});
            triangles.push_back({here + k, next + l, next + k});
        }
    }
}

void PersonModel::addGlasses() {
    using Style = PersonTraits::GlassesStyle;
    const bool isRound = traits.glasses == Style::round;
    const bool isWide = traits.glasses == Style::wide;
    const float width = isRound ? 21.5F : (isWide ? 26.5F : 24.5F);
    const float height = isRound ? 20.5F : (isWide ? 15.5F : 18.F);
    const float power = isRound ? 1.F : (isWide ? 0.66F : 0.5F);
    const float middleX = std::max(traits.eyeX + 1, width + 8.5F);
    const float front = std::max(9.F, shape.onFace(0, -2).z + 3);
    const auto bent = [&](float x, float y) {
        return Vector3{x, y, front - 0.0038F * x * x + 0.05F * y};
    };
    const auto power2 = [&](float c) { return std::copysign(std::pow(std::abs(c), power), c); };
    for (const float side : {-1.F, 1.F}) {
        std::vector<Vector3> rim;
        constexpr int count = 44;
        for (int i = 0; i < count; ++i) {
            const float a = side * 2 * pi * static_cast<float>(i) / count;
            rim.push_back(bent(side * (middleX + width * power2(std::cos(a)) * side * side),
                               -2 + height * power2(std::sin(a))));
        }
        addTube(rim, traits.rimWidth, true);
        const Vector3 hinge = bent(side * (middleX + width * 0.98F), 5);
        const float ear = side * (traits.skullWidth + 5);
        addTube({hinge,
                 {side * (middleX + width + 3), 5, hinge.z - 8},
                 {side * std::max(std::abs(ear), middleX + width + 2), 4, -60},
                 {ear, 2, -98}},
                traits.rimWidth, false);
    }
    std::vector<Vector3> bridge;
    const float inner = middleX - width;
    for (int i = -4; i <= 4; ++i) {
        const float s = static_cast<float>(i) / 4;
        bridge.push_back(bent(s * inner, 2.5F + 2.5F * (1 - s * s)));
    }
    addTube(bridge, traits.rimWidth, false);
}

void PersonModel::findAnchors() {
    const auto set = [&](std::size_t index, const Vector3& p) { anchors[index] = {p, motion(p)}; };
    const auto onFace = [&](std::size_t index, float x, float y) {
        set(index, shape.onFace(x, y));
    };

    // The outline of the bare face from the front, from beside the eyes down to the chin.
    const Vector3 middle{.x = 0, .y = -40, .z = 0};
    std::array<Vector3, 97> outline;
    for (std::size_t i = 0; i < outline.size(); ++i) {
        const float angle = pi * (-0.18F + 1.36F * static_cast<float>(i) / (outline.size() - 1));
        const Vector3 out{-std::cos(angle), -std::sin(angle), 0};
        Vector3 best = middle;
        for (int millimetres = 30; millimetres < 130; ++millimetres) {
            const auto r = static_cast<float>(millimetres);
            float nearest = 1e9F;
            for (int depth = -78; depth < 5; depth += 6) {
                const Vector3 p{middle.x + out.x * r, middle.y + out.y * r,
                                static_cast<float>(depth)};
                const float d = shape.bareFace(p);
                if (d < nearest) {
                    nearest = d;
                    if (d < 0) best = p;
                }
            }
            if (nearest > 0) break;
        }
        outline[i] = best;
    }
    std::array<float, outline.size()> along{};
    for (std::size_t i = 1; i < outline.size(); ++i) {
        const Vector3 step = outline[i] - outline[i - 1];
        along[i] = along[i - 1] + std::hypot(step.x, step.y);
    }
    std::size_t at = 0;
    for (std::size_t i = 0; i < contourPoints; ++i) {
        const float wanted = along.back() * static_cast<float>(i) / (contourPoints - 1);
        while (at + 2 < along.size() && along[at + 1] < wanted)
            ++at;
        const float t = (wanted - along[at]) / std::max(1e-3F, along[at + 1] - along[at]);
        const Vector3 edge = mix(outline[at], outline[at + 1], std::clamp(t, 0.F, 1.F));
        for (std::size_t k = 0; k < contourDepth; ++k) {
            const float inward = 0.07F * static_cast<float>(k);
            Vector3 p = edge;
            if (k > 0) {
                p = shape.onFace(edge.x * (1 - inward),
                                 edge.y + (middle.y - edge.y) * inward * 0.6F);
            }
            contour[i][k] = {p, motion(p)};
        }
        anchors[i] = contour[i][0];
    }

    const auto brow = [&](float side, std::size_t inner, bool isLeftOfImage) {
        // `inner` is the index of the upper inner point.
        for (std::size_t i = 0; i < 5; ++i) {
            const float x =
                std::lerp(traits.browGap + 1, traits.browEnd - 1, static_cast<float>(i) / 4);
            const float half = shape.browThickness(std::min(x, traits.browEnd - 0.5F)) * 0.5F;
            const float y = shape.browMiddle(x);
            onFace(isLeftOfImage ? inner - i : inner + i, side * x, y + half + 0.5F);
            if (i == 4) continue;
            onFace(isLeftOfImage ? inner + 1 + i : inner + 8 - i, side * x, y - half - 0.5F);
        }
    };
    brow(-1, 37, true);
    brow(1, 42, false);

    const float tipY = traits.noseBaseY + traits.noseTipRise;
    for (std::size_t i = 0; i < 4; ++i)
        onFace(51 + i, 0, std::lerp(-2.F, tipY, static_cast<float>(i) / 3));
    for (std::size_t i = 0; i < 5; ++i) {
        const float s = static_cast<float>(i) / 2 - 1;
        onFace(55 + i, s * (traits.noseWidth - 2), traits.noseBaseY - 2.5F + 2 * std::abs(s));
    }

    for (const float side : {-1.F, 1.F}) {
        const Vector3 c = shape.eye(side);
        const std::size_t first = side < 0 ? 60 : 68;
        for (std::size_t i = 0; i < 8; ++i) {
            // Clockwise in the picture from the left corner.
            const float s = i <= 4 ? static_cast<float>(i) / 2 - 1 : 3 - static_cast<float>(i) / 2;
            const float dx = s * traits.eyeWidth * side * (std::abs(s) > 0.9F ? 0.97F : 1.F);
            const auto edges = shape.lids(dx);
            const bool isUpper = i <= 4;
            const float y = isUpper ? edges.upper : edges.lower;
            const float r = traits.eyeRadius + HeadShape::lidThickness * 0.7F;
            const float z = std::sqrt(std::max(9.F, r * r - dx * dx - y * y));
            const Vector3 p =
                c + Vector3{s * traits.eyeWidth * (std::abs(s) > 0.9F ? 0.97F : 1.F), y, z};
            anchors[first + i] = {p,
                                  motion(p + Vector3{.x = 0, .y = isUpper ? 0.1F : -0.1F, .z = 0})};
        }
        anchors[side < 0 ? 96 : 97] = {c + Vector3{.x = 0, .y = 0, .z = traits.eyeRadius}, {}};
    }

    const auto lips = [&](std::size_t index, float x, float dy, bool isLower) {
        const Vector3 p = shape.onFace(x, shape.mouthLine(x) + dy);
        anchors[index] = {p, {.jaw = isLower ? 1.F : 0.F}};
    };
    const float w = traits.mouthWidth;
    for (std::size_t i = 0; i < 7; ++i) {
        const float x = w * (static_cast<float>(i) / 3 - 1);
        lips(76 + i, x, shape.upperLip(x) + (i == 0 || i == 6 ? 0.F : 0.8F), false);
    }
    for (std::size_t i = 0; i < 5; ++i) {
        const float x = w * 0.67F * (1 - static_cast<float>(i) / 2);
        lips(83 + i, x, -shape.lowerLip(x) - 0.8F, true);
    }
    for (std::size_t i = 0; i < 5; ++i) {
        const float x = w * 0.86F * (static_cast<float>(i) / 2 - 1);
        lips(88 + i, x, 1.3F * (1 - std::abs(x) / w), false);
    }
    for (std::size_t i = 0; i < 3; ++i) {
        const float x = w * 0.5F * (1 - static_cast<float>(i));
        lips(93 + i, x, -1.3F * (1 - std::abs(x) / w), true);
    }
    for (const std::size_t corner : {76U, 82U, 88U, 92U})
        anchors[corner].motion.jaw = 0.45F;
}

}  // namespace marrowby
