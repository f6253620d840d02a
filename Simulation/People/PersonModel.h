// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/HeadShape.h"
#include "Simulation/People/PersonTraits.h"
#include "Simulation/People/SurfaceMesh.h"
#include "Simulation/People/Vector3.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace marrowby {

/// A person's surface, ready to be drawn. In the axes and millimetres of `PersonTraits`.
struct PersonModel {
    enum class Part : std::uint8_t { body, eye, glasses };

    /// How a point follows the face: about the jaw's hinge, and about the middle of its eye.
    struct Motion {
        /// 0 … 1.
        float jaw = 0;
        /// Radians down when the eye shuts.
        float lid = 0;
    };
    struct Vertex {
        Vector3 position;
        Vector3 normal;
        HeadShape::Surface surface;
        /// How much of the light from all around arrives, 0…1.
        float openness = 1;
        /// Its change with the light's direction.
        Vector3 openTo{};
        /// 1 on the head, 0 on the body.
        float headWeight = 1;
        Motion motion{};
    };
    /// The triangles of one part; they follow those of the part before.
    struct Range {
        Part part;
        std::size_t end;
    };
    struct Anchor {
        Vector3 position;
        Motion motion{};
    };

    explicit PersonModel(std::uint64_t seed);
    PersonModel(const PersonModel&) = delete;
    PersonModel& operator=(const PersonModel&) = delete;

    PersonTraits traits;
    HeadShape shape{traits};
    std::vector<Vertex> vertices;
    std::vector<SurfaceMesh::Triangle> triangles;
    std::vector<Range> ranges;

    /// The points of `FaceTruth` but for the contour.
    std::array<Anchor, 98> anchors;
    static constexpr std::size_t contourPoints = 33;
    static constexpr std::size_t contourDepth = 9;
    /// For every point of the contour where it may slide to when the head turns.
    std::array<std::array<Anchor, contourDepth>, contourPoints> contour;

  private:
    void addBody();
    void addEyes();
    void addGlasses();
    void bakeLight();
    void findAnchors();
    [[nodiscard]] Motion motion(const Vector3& p) const;
    void addTube(const std::vector<Vector3>& line, float radius, bool isClosed);
};

/// Where a head turns.
inline constexpr Vector3 headPivot{.x = 0, .y = -55, .z = -100};
/// The axis that the jaw turns about.
inline constexpr Vector3 jawHinge{.x = 0, .y = -18, .z = -84};

}  // namespace marrowby
