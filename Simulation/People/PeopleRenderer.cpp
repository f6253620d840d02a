// SPDX-License-Identifier: Apache-2.0
#include "Simulation/People/PeopleRenderer.h"

#include "Simulation/People/Fields.h"
#include "Simulation/People/PersonModel.h"
#include "Simulation/People/Vector3.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace marrowby {

using namespace fields;

namespace {

/// Samples per pixel and side.
constexpr int fine = 2;
constexpr float nearPlane = 0.05F;

/// What is interpolated over a triangle.
enum Channel : std::size_t {
    lightR,
    lightG,
    lightB,
    colourR,
    colourG,
    colourB,
    shine,
    hair,
    cloth,
    strandU,
    strandV,
    restX,
    restY,
    restZ,

    channelCount = 16,
};
using Channels = std::array<float, channelCount>;

struct Corner {
    /// In samples, and one by the distance in metres.
    float x = 0;
    float y = 0;
    float closeness = 0;
    bool isFront = false;
};

constexpr std::uint32_t nothing = std::numeric_limits<std::uint32_t>::max();

float squared(float x) {
    return x * x;
}

/// Where everything is, in the picture's axes with y up and z to the camera, in metres.
class Placement {
  public:
    Placement(const PersonModel& model, const PersonPose& pose, const Expression& expression)
        : model_(model),
          head_(Rotation::fromAngles({pose.yaw, pose.pitch, pose.roll})),
          body_(Rotation::fromAngles({0.3F * pose.yaw, 0, 0.1F * pose.roll})),
          position_{pose.position.x, -pose.position.y, -pose.position.z},
          // Closes the gap of the model's mouth.
          jaw_(expression.mouthOpening * 0.26F - HeadShape::mouthGap / 98),
          // The lids follow the eyes down.
          lid_(std::clamp(expression.blink + 0.6F * std::max(0.F, expression.gazePitch), 0.F, 1.F)),
          gaze_(Rotation::fromAngles({expression.gazeYaw, expression.gazePitch, 0})
                    .apply({.x = 0, .y = 0, .z = 1})) {}

    [[nodiscard]] Vector3 place(Vector3 p, const PersonModel::Motion& motion,
                                float headWeight) const {
        p = moved(p, motion);
        const Vector3 r = p - headPivot;
        Vector3 turned = head_.apply(r);
        if (headWeight < 1) turned = mix(body_.apply(r), turned, headWeight);
        return (turned + headPivot) * 0.001F + position_;
    }
    [[nodiscard]] Vector3 turn(const Vector3& normal, float headWeight) const {
        if (headWeight >= 1) return head_.apply(normal);
        return normalized(mix(body_.apply(normal), head_.apply(normal), headWeight));
    }
    /// The eye looks there: its middle stays.
    [[nodiscard]] const Vector3& gaze() const { return gaze_; }
    [[nodiscard]] const Rotation& head() const { return head_; }
    [[nodiscard]] float lid() const { return lid_; }

    [[nodiscard]] Rotation::Angles seenAngles() const {
        const Vector3 face = place({.x = 0, .y = -30, .z = 0}, {}, 1);
        return Rotation::towards(normalized(face * -1)).inverse().after(head_).angles();
    }

  private:
    [[nodiscard]] Vector3 moved(Vector3 p, const PersonModel::Motion& motion) const {
        if (motion.lid != 0) {
            const Vector3 eye = model_.shape.eye(p.x < 0 ? -1.F : 1.F);
            const float angle = motion.lid * lid_;
            const float c = std::cos(angle);
            const float s = std::sin(angle);
            const Vector3 r = p - eye;
            p = eye + Vector3{r.x, c * r.y - s * r.z, s * r.y + c * r.z};
        }
        if (motion.jaw > 0) {
            const float angle = jaw_ * motion.jaw;
            const Vector3 r = p - jawHinge;
            p = p + Vector3{.x = 0, .y = -r.z * angle, .z = r.y * angle};
        }
        return p;
    }

    const PersonModel& model_;
    Rotation head_;
    Rotation body_;
    Vector3 position_;
    float jaw_;
    float lid_;
    Vector3 gaze_;
};

struct Lights {
    explicit Lights(const Lighting& lighting)
        : towardsKey(normalized(
              {lighting.keyDirection.x, -lighting.keyDirection.y, -lighting.keyDirection.z})),
          key(lighting.keyColour * lighting.keyStrength),
          ambient(lighting.ambient),
          back(lighting.backlightColour * lighting.backlight) {}

    Vector3 towardsKey;
    Vector3 key;
    Vector3 ambient;
    Vector3 back;
};

/// The light that leaves a point of a white surface, by colour, and its shine.
void light(Channels& out, const PersonModel::Vertex& v, const Vector3& p, const Vector3& normal,
           const Vector3& openTo, const Lights& lights) {
    const Vector3 view = normalized(p * -1);
    const float facing = dot(normal, lights.towardsKey);
    const float open =
        std::clamp(v.openness * 1.12F + dot(openTo, lights.towardsKey) * 1.3F, 0.F, 1.F);
    const float shadow = smoothstep(0.12F, 0.75F, open);
    // Subsurface scattering, strongest in red.
    const auto key = [&](float wrap) {
        const float wrapped = std::max(0.F, (facing + wrap) / (1 + wrap));
        return wrapped * (shadow + wrap * 0.5F * (1 - shadow));
    };
    const float around = (0.80F + 0.20F * normal.y) * (0.12F + 0.88F * v.openness);
    const float rim = std::max(0.F, 1 - std::max(0.F, dot(normal, view)));
    const float backlit = rim * rim * rim * (0.55F + 0.45F * normal.y) * v.openness;
    const float bounce = 0.05F * std::max(0.F, -normal.y) * v.openness;
    const Vector3 lit{
        lights.key.x * (key(0.34F) + bounce) + lights.ambient.x * around + lights.back.x * backlit,
        lights.key.y * (key(0.20F) + bounce) + lights.ambient.y * around + lights.back.y * backlit,
        lights.key.z * (key(0.15F) + bounce) + lights.ambient.z * around + lights.back.z * backlit};
    out[lightR] = lit.x;
    out[lightG] = lit.y;
    out[lightB] = lit.z;

    const float half = std::max(0.F, dot(normal, normalized(view + lights.towardsKey)));
    const float half4 = squared(squared(half));
    const float half16 = squared(squared(half4));
    const float fresnel = 0.6F + 1.8F * rim * rim * rim;
    const float strength = (lights.key.x + lights.key.y + lights.key.z) * 0.333F;
    out[shine] = v.surface.gloss * fresnel * shadow * strength *
                     (0.030F * half4 * half4 + 0.045F * half16 + 0.05F * half16 * half16 * half16) +
                 0.010F * rim * v.openness * lights.ambient.y;
}

}  // namespace

struct PeopleRenderer::Buffers {
    struct Bounds {
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
    };

    std::vector<Corner> corners;
    std::vector<Channels> channels;
    std::vector<std::uint32_t> shadedIn;
    std::uint32_t drawing = 0;
    // Of the samples within the bounds.
    Bounds bounds;
    std::vector<float> closeness;
    std::vector<std::uint32_t> seen;

    [[nodiscard]] std::size_t sample(int x, int y) const {
        return static_cast<std::size_t>(y - bounds.top) *
                   static_cast<std::size_t>(bounds.right - bounds.left) +
               static_cast<std::size_t>(x - bounds.left);
    }

    void place(const PersonModel& model, const Placement& placement, const PinholeCamera& camera);
    void shadeCorner(const PersonModel& model, std::uint32_t index, const Placement& placement,
                     const Lights& lights);
    void setBounds(const LinearImage& image);
    void rasterise(const PersonModel& model);
    void fill(std::uint32_t index, const SurfaceMesh::Triangle& triangle);
    void resolve(LinearImage& image, const PersonModel& model, const Placement& placement,
                 const Lights& lights);
    [[nodiscard]] Channels interpolate(const SurfaceMesh::Triangle& triangle, float x,
                                       float y) const;
};

void PeopleRenderer::Buffers::place(const PersonModel& model, const Placement& placement,
                                    const PinholeCamera& camera) {
    const std::size_t count = model.vertices.size();
    corners.resize(count);
    channels.resize(count);
    // A drawing shades only the corners that it shows, each once.
    shadedIn.resize(count);
    if (++drawing == 0) {
        std::ranges::fill(shadedIn, 0);
        drawing = 1;
    }
    const auto focal = static_cast<float>(camera.focalLength) * fine;
    const auto centreX = static_cast<float>(camera.centreX) * fine;
    const auto centreY = static_cast<float>(camera.centreY) * fine;
    for (std::size_t i = 0; i < count; ++i) {
        const PersonModel::Vertex& v = model.vertices[i];
        const Vector3 p = placement.place(v.position, v.motion, v.headWeight);
        Corner& corner = corners[i];
        corner.isFront = -p.z > nearPlane;
        if (!corner.isFront) continue;
        corner.closeness = -1 / p.z;
        corner.x = centreX + focal * p.x * corner.closeness;
        corner.y = centreY - focal * p.y * corner.closeness;
    }
}

void PeopleRenderer::Buffers::shadeCorner(const PersonModel& model, std::uint32_t index,
                                          const Placement& placement, const Lights& lights) {
    if (shadedIn[index] == drawing) return;
    shadedIn[index] = drawing;
    const PersonModel::Vertex& v = model.vertices[index];
    Channels& out = channels[index];
    light(out, v, placement.place(v.position, v.motion, v.headWeight),
          placement.turn(v.normal, v.headWeight), placement.turn(v.openTo, 1), lights);
    out[colourR] = v.surface.colour.x;
    out[colourG] = v.surface.colour.y;
    out[colourB] = v.surface.colour.z;
    out[hair] = v.surface.hair;
    out[cloth] = v.surface.cloth;
    out[strandU] = v.surface.strandU;
    out[strandV] = v.surface.strandV;
    out[restX] = v.position.x;
    out[restY] = v.position.y;
    out[restZ] = v.position.z;
}

void PeopleRenderer::Buffers::setBounds(const LinearImage& image) {
    float left = 1e9F;
    float top = 1e9F;
    float right = -1e9F;
    float bottom = -1e9F;
    for (const Corner& corner : corners) {
        if (!corner.isFront) continue;
        left = std::min(left, corner.x);
        right = std::max(right, corner.x);
        top = std::min(top, corner.y);
        bottom = std::max(bottom, corner.y);
    }
    // Whole pixels.
    const auto pixel = [](float value, int most) {
        return std::clamp(static_cast<int>(std::floor(std::clamp(value, -1e6F, 1e6F) / fine)), 0,
                          most) *
               fine;
    };
    bounds = {.left = pixel(left, image.width),
              .top = pixel(top, image.height),
              .right = pixel(right + fine, image.width),
              .bottom = pixel(bottom + fine, image.height)};
    const auto count = static_cast<std::size_t>(std::max(0, bounds.right - bounds.left)) *
                       static_cast<std::size_t>(std::max(0, bounds.bottom - bounds.top));
    closeness.assign(count, 0);
    seen.assign(count, nothing);
}

void PeopleRenderer::Buffers::fill(std::uint32_t index, const SurfaceMesh::Triangle& triangle) {
    const Corner& a = corners[triangle[0]];
    const Corner& b = corners[triangle[1]];
    const Corner& c = corners[triangle[2]];
    if (!a.isFront || !b.isFront || !c.isFront) return;
    // Anticlockwise with y up is clockwise here.
    const float area = (c.x - a.x) * (b.y - a.y) - (b.x - a.x) * (c.y - a.y);
    if (area <= 0) return;
    const auto [leftmost, rightmost] = std::minmax({a.x, b.x, c.x});
    const auto [topmost, bottommost] = std::minmax({a.y, b.y, c.y});
    // Samples lie in the middle of their squares. Truncation after clamping, because rounding is a
    // call; a sample too many fails the test below.
    const auto first = [](float v, int least, int end) {
        return static_cast<int>(
            std::clamp(v + 0.499F, static_cast<float>(least), static_cast<float>(end)));
    };
    const auto last = [](float v, int least, int end) {
        return static_cast<int>(
                   std::clamp(v + 0.5F, static_cast<float>(least), static_cast<float>(end))) -
               1;
    };
    const int left = first(leftmost, bounds.left, bounds.right);
    const int right = last(rightmost, bounds.left, bounds.right);
    const int top = first(topmost, bounds.top, bounds.bottom);
    const int bottom = last(bottommost, bounds.top, bounds.bottom);
    if (left > right || top > bottom) return;

    const float scale = 1 / area;
    // Shares of b and c grow evenly to the right and down.
    const float bx = -(c.y - a.y) * scale;
    const float by = (c.x - a.x) * scale;
    const float cx = (b.y - a.y) * scale;
    const float cy = -(b.x - a.x) * scale;
    for (int y = top; y <= bottom; ++y) {
        const float dx = static_cast<float>(left) + 0.5F - a.x;
        const float dy = static_cast<float>(y) + 0.5F - a.y;
        float shareB = dx * bx + dy * by;
        float shareC = dx * cx + dy * cy;
        std::size_t at = sample(left, y);
        for (int x = left; x <= right; ++x, ++at, shareB += bx, shareC += cx) {
            if (shareB < 0 || shareC < 0 || shareB + shareC > 1) continue;
            const float here = a.closeness + (b.closeness - a.closeness) * shareB +
                               (c.closeness - a.closeness) * shareC;
            if (here <= closeness[at]) continue;
            closeness[at] = here;
            seen[at] = index;
        }
    }
}

void PeopleRenderer::Buffers::rasterise(const PersonModel& model) {
    for (std::uint32_t i = 0; i < model.triangles.size(); ++i)
        fill(i, model.triangles[i]);
}

Channels PeopleRenderer::Buffers::interpolate(const SurfaceMesh::Triangle& triangle, float x,
                                              float y) const {
    const Corner& a = corners[triangle[0]];
    const Corner& b = corners[triangle[1]];
    const Corner& c = corners[triangle[2]];
    const float area = (c.x - a.x) * (b.y - a.y) - (b.x - a.x) * (c.y - a.y);
    const float shareB = ((c.x - a.x) * (y - a.y) - (x - a.x) * (c.y - a.y)) / area;
    const float shareC = ((x - a.x) * (b.y - a.y) - (b.x - a.x) * (y - a.y)) / area;
    const float shareA = 1 - shareB - shareC;
    const Channels& va = channels[triangle[0]];
    const Channels& vb = channels[triangle[1]];
    const Channels& vc = channels[triangle[2]];
    Channels result;
    for (std::size_t i = 0; i < channelCount; ++i)
        result[i] = va[i] * shareA + vb[i] * shareB + vc[i] * shareC;
    return result;
}

namespace {

/// Skin, hair or cloth at a point.
Vector3 shadeBody(const Channels& c, const PersonTraits& traits) {
    const Vector3 rest{c[restX], c[restY], c[restZ]};
    const Vector3 received{c[lightR], c[lightG], c[lightB]};
    const float inCloth = smoothstep(-0.4F, 0.5F, c[cloth]);
    Vector3 colour{c[colourR], c[colourG], c[colourB]};
    float shines = c[shine];
    if (inCloth < 1) {
        const float pores = noise(rest * 0.42F, traits.noiseSeed) +
                            0.8F * noise(rest * 0.95F, traits.noiseSeed + 1) - 0.9F;
        colour = colour * (1 + 0.11F * pores);
        shines *= 1 + 0.5F * pores;
    }
    if (c[hair] > 0.02F && inCloth < 1) {
        const float strand =
            noise({c[strandU], c[strandV], 3.7F}, traits.noiseSeed) * 0.6F +
            noise({c[strandU] * 2.1F, c[strandV] * 1.3F, 9.1F}, traits.noiseSeed) * 0.4F;
        const float cover =
            smoothstep(0.28F, 0.72F, c[hair] + (strand - 0.5F) * 0.9F * (1.15F - c[hair]));
        Vector3 strands = traits.hairColour * (0.45F + 1.1F * strand);
        const float greyed = std::clamp(traits.grey * (0.7F + 0.6F * strand), 0.F, 1.F);
        strands = mix(strands, {.x = 0.38F, .y = 0.37F, .z = 0.36F}, greyed);
        colour = mix(colour, strands, cover);
        shines = std::lerp(shines, 1.3F * shines * smoothstep(0.35F, 0.85F, strand), cover);
    }
    if (inCloth > 0) {
        const float weave = noise(rest * 0.9F, 77) - 0.5F;
        const float folds =
            noise({rest.x * 0.02F, rest.y * 0.013F, rest.z * 0.02F}, traits.noiseSeed + 5) - 0.5F;
        const float hem = 1 - 0.3F * bump((c[cloth] - 6.5F) / 1.2F);
        colour =
            mix(colour, traits.clothColour * ((1 + 0.16F * weave + 0.5F * folds) * hem), inCloth);
        shines *= 1 - 0.85F * inCloth;
    }
    return colour * received + Vector3{shines, shines, shines};
}

struct EyeView {
    Vector3 gaze;
    /// In the head's axes.
    Vector3 towardsKey;
    Vector3 towardsCamera;
    float lid;
    Vector3 key;
    Vector3 ambient;
};

Vector3 shadeEye(const Channels& c, const PersonModel& model, const EyeView& view) {
    const PersonTraits& traits = model.traits;
    const float side = c[strandU] < 0 ? -1.F : 1.F;
    const Vector3 r = Vector3{c[restX], c[restY], c[restZ]} - model.shape.eye(side);
    const Vector3 out = normalized(r);
    const float away = length(out - view.gaze * dot(out, view.gaze)) * traits.eyeRadius;
    constexpr float irisRadius = 5.9F;
    const float dx = r.x * side;
    // Redder towards the nose.
    Vector3 colour = mix({c[colourR], c[colourG], c[colourB]}, {.x = 0.55F, .y = 0.26F, .z = 0.22F},
                         0.7F * smoothstep(-0.72F, -1.02F, dx / traits.eyeWidth) +
                             0.10F * noise(r * 1.1F, traits.noiseSeed));
    if (dot(out, view.gaze) > 0 && away < irisRadius + 1) {
        const Vector3 across = out - view.gaze;
        const float angle = std::atan2(across.y, across.x);
        const float rays = noise({angle * 7, away * 0.7F, side}, traits.noiseSeed);
        const float rim = smoothstep(irisRadius - 1.6F, irisRadius, away);
        Vector3 iris = traits.irisColour * ((0.55F + 0.9F * rays) * (1 - 0.75F * rim) *
                                            (1.25F - 0.5F * smoothstep(2, 5, away)));
        iris = mix(iris, {.x = 0.004F, .y = 0.004F, .z = 0.004F}, smoothstep(2.35F, 1.95F, away));
        colour = mix(iris, colour, smoothstep(irisRadius - 0.5F, irisRadius + 0.5F, away));
    }
    // The lids' shade.
    const auto edges = model.shape.lids(dx);
    const float upper = edges.upper + (edges.lower - edges.upper) * 0.82F * view.lid;
    const float shade = 0.42F + 0.58F * smoothstep(-0.8F, 3.6F, upper - r.y) *
                                    smoothstep(-1.5F, 1.6F, r.y - edges.lower);
    const Vector3 received{c[lightR], c[lightG], c[lightB]};
    colour = colour * received * shade;
    // The cornea bulges out of the eyeball, and shows the lamp and the room.
    const Vector3 bulge = away < irisRadius ? normalized(r - view.gaze * 4.6F) : out;
    const Vector3 half = normalized(view.towardsKey + view.towardsCamera);
    const float lamp = smoothstep(0.972F, 0.988F, dot(bulge, half)) * 0.85F;
    const float room = 0.03F + 0.05F * smoothstep(0.1F, 0.7F, bulge.y);
    return colour + (view.key * lamp + view.ambient * room) * shade;
}

Vector3 shadeGlasses(const Channels& c) {
    return Vector3{c[colourR] * c[lightR], c[colourG] * c[lightG], c[colourB] * c[lightB]} +
           Vector3{1, 1, 1} * (2.2F * c[shine]);
}

}  // namespace

void PeopleRenderer::Buffers::resolve(LinearImage& image, const PersonModel& model,
                                      const Placement& placement, const Lights& lights) {
    const Rotation toHead = placement.head().inverse();
    const EyeView eyeView{
        .gaze = placement.gaze(),
        .towardsKey = toHead.apply(lights.towardsKey),
        .towardsCamera = toHead.apply(normalized(placement.place({}, {}, 1) * -1)),
        .lid = placement.lid(),
        .key = lights.key,
        .ambient = lights.ambient};
    const auto partOf = [&](std::uint32_t triangle) {
        std::size_t i = 0;
        while (triangle >= model.ranges[i].end)
            ++i;
        return model.ranges[i].part;
    };
    const auto shade = [&](std::uint32_t triangle, PersonModel::Part part, int x, int y) {
        for (const std::uint32_t corner : model.triangles[triangle])
            shadeCorner(model, corner, placement, lights);
        const Channels c = interpolate(model.triangles[triangle], static_cast<float>(x) + 0.5F,
                                       static_cast<float>(y) + 0.5F);
        switch (part) {
            case PersonModel::Part::body:
                return shadeBody(c, model.traits);
            case PersonModel::Part::eye:
                return shadeEye(c, model, eyeView);
            case PersonModel::Part::glasses:
                return shadeGlasses(c);
        }
        return Vector3{};
    };

    const auto rowSamples = static_cast<std::size_t>(bounds.right - bounds.left);
    static_assert(fine == 2, "four samples are looked at");
    for (int y = bounds.top; y < bounds.bottom; y += fine) {
        for (int x = bounds.left; x < bounds.right; x += fine) {
            const std::size_t upper = sample(x, y);
            const std::size_t lower = upper + rowSamples;
            if ((seen[upper] & seen[upper + 1] & seen[lower] & seen[lower + 1]) == nothing)
                continue;
            // One shading for the samples that show the same piece of surface.
            struct Piece {
                PersonModel::Part part{};
                float distance = 0;
                int samples = 0;
                Vector3 colour;
            };
            std::array<Piece, std::size_t{fine} * fine> pieces;
            std::size_t count = 0;
            for (int i = 0; i < fine * fine; ++i) {
                const int sx = x + i % fine;
                const int sy = y + i / fine;
                const std::size_t at = sample(sx, sy);
                const std::uint32_t triangle = seen[at];
                if (triangle == nothing) continue;
                const PersonModel::Part part = partOf(triangle);
                const float distance = 1 / closeness[at];
                const auto same = std::find_if(
                    pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(count),
                    [&](const Piece& piece) {
                        return piece.part == part && std::abs(piece.distance - distance) < 0.006F;
                    });
                if (same != pieces.begin() + static_cast<std::ptrdiff_t>(count)) {
                    ++same->samples;
                    continue;
                }
                pieces[count++] = {part, distance, 1, shade(triangle, part, sx, sy)};
            }
            if (count == 0) continue;
            Vector3 sum;
            int covered = 0;
            for (std::size_t i = 0; i < count; ++i) {
                sum = sum + pieces[i].colour * static_cast<float>(pieces[i].samples);
                covered += pieces[i].samples;
            }
            constexpr float one = 1.F / (fine * fine);
            const float cover = static_cast<float>(covered) * one;
            float* pixel = image.pixel(x / fine, y / fine);
            pixel[0] = pixel[0] * (1 - cover) + sum.x * one;
            pixel[1] = pixel[1] * (1 - cover) + sum.y * one;
            pixel[2] = pixel[2] * (1 - cover) + sum.z * one;
            float& coverage = image.coverage[image.index(x / fine, y / fine)];
            coverage = coverage + (1 - coverage) * cover;
        }
    }
}

PeopleRenderer::PeopleRenderer() : buffers_(std::make_unique<Buffers>()) {}
PeopleRenderer::PeopleRenderer(PeopleRenderer&&) noexcept = default;
PeopleRenderer& PeopleRenderer::operator=(PeopleRenderer&&) noexcept = default;
PeopleRenderer::~PeopleRenderer() = default;

namespace {

FaceTruth truth(const Person& person, const Placement& placement, const PinholeCamera& camera) {
    const PersonModel& model = person.model();
    FaceTruth result{.person = person.seed()};
    const auto shown = [&](const PersonModel::Anchor& anchor) {
        const Vector3 p = placement.place(anchor.position, anchor.motion, 1);
        const double k = camera.focalLength / -static_cast<double>(p.z);
        return Point{camera.centreX + k * static_cast<double>(p.x),
                     camera.centreY - k * static_cast<double>(p.y)};
    };
    for (std::size_t i = 0; i < result.points.size(); ++i)
        result.points[i] = shown(model.anchors[i]);
    for (const std::size_t i : {96U, 97U}) {
        const float side = i == 96 ? -1.F : 1.F;
        result.points[i] =
            shown({model.shape.eye(side) + placement.gaze() * (model.traits.eyeRadius + 0.5F), {}});
        result.pupils[i - 96] = result.points[i];
    }
    // Of the places where a point of the contour may lie, the outermost is the outline.
    const Point middle = shown({{.x = 0, .y = -40, .z = 0}, {}});
    for (std::size_t i = 0; i < PersonModel::contourPoints; ++i) {
        const Point first = shown(model.contour[i][0]);
        const Point out{first.x - middle.x, first.y - middle.y};
        double farthest = -1e9;
        for (const PersonModel::Anchor& anchor : model.contour[i]) {
            const Point p = shown(anchor);
            const double reach = p.x * out.x + p.y * out.y;
            if (reach > farthest) {
                farthest = reach;
                result.points[i] = p;
            }
        }
    }

    double left = 1e9;
    double top = 1e9;
    double right = -1e9;
    double bottom = -1e9;
    for (const Point& p : result.points) {
        left = std::min(left, p.x);
        right = std::max(right, p.x);
        top = std::min(top, p.y);
        bottom = std::max(bottom, p.y);
    }
    const Point forehead = shown({{.x = 0, .y = 70, .z = -4}, {}});
    top = std::min(top, forehead.y);
    result.box = {left, top, right - left, bottom - top};

    const Rotation::Angles angles = placement.seenAngles();
    result.yaw = static_cast<double>(angles.yaw);
    result.pitch = static_cast<double>(angles.pitch);
    result.roll = static_cast<double>(angles.roll);
    return result;
}

}  // namespace

FaceTruth PeopleRenderer::draw(LinearImage& image, const PinholeCamera& camera,
                               const Person& person, const PersonPose& pose,
                               const Expression& expression, const Lighting& lighting) {
    const PersonModel& model = person.model();
    const Placement placement(model, pose, expression);
    const Lights lights(lighting);
    buffers_->place(model, placement, camera);
    buffers_->setBounds(image);
    buffers_->rasterise(model);
    buffers_->resolve(image, model, placement, lights);
    return truth(person, placement, camera);
}

}  // namespace marrowby
