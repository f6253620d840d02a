// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Simulation/People/PersonTraits.h"
#include "Simulation/People/Vector3.h"

namespace marrowby {

/// A person's body from the chest up as a signed distance field, and what covers it where. In the
/// axes and millimetres of `PersonTraits`. The mouth stands open by `mouthGap`.
class HeadShape {
  public:
    /// What shows at a point of the surface.
    struct Surface {
        /// Of the skin alone.
        Vector3 colour;
        /// How densely hair covers the skin, 0…1, and where its strands run: the noise that parts
        /// them goes along these two.
        float hair = 0;
        float strandU = 0;
        float strandV = 0;
        /// Millimetres inside the clothes.
        float cloth = 0;
        /// How much the skin shines, about 1.
        float gloss = 0;
    };
    /// The lids' edges over one point of an eye's width, relative to the eye.
    struct LidEdges {
        float upper;
        float lower;
        /// Where the upper lid folds.
        float crease;
    };

    static constexpr float mouthGap = 2.6F;
    static constexpr float lidThickness = 1.5F;

    /// `traits` outlives the shape.
    explicit HeadShape(const PersonTraits& traits) : t_(traits) {}

    /// With hair, beard and clothes.
    [[nodiscard]] float distance(const Vector3& p) const;
    /// Face and skull alone: no ears, neck, hair.
    [[nodiscard]] float bareFace(const Vector3& p) const;
    [[nodiscard]] Surface surface(const Vector3& p) const;

    /// The middle of the eyeball; `side` is 1 for the person's left eye and -1 for the right one.
    [[nodiscard]] Vector3 eye(float side) const;
    /// `dx` from the middle of the eye, outwards.
    [[nodiscard]] LidEdges lids(float dx) const;
    /// Height of the line between the lips.
    [[nodiscard]] float mouthLine(float x) const;
    /// How far the lips reach up and down from it.
    [[nodiscard]] float upperLip(float x) const;
    [[nodiscard]] float lowerLip(float x) const;
    /// The middle height of the brow at `x` ≥ 0, and half its thickness there (0 beyond its ends).
    [[nodiscard]] float browMiddle(float x) const;
    [[nodiscard]] float browThickness(float x) const;
    /// The front surface at (x, y).
    [[nodiscard]] Vector3 onFace(float x, float y) const;

  private:
    struct Cover {
        float density = 0;
        float thickness = 0;
    };
    [[nodiscard]] bool isHairLong() const;
    /// Where the point would be in a face of two equal sides.
    [[nodiscard]] Vector3 symmetric(const Vector3& p) const;
    /// From the line between the nose and a corner of the mouth, seen from the front.
    [[nodiscard]] float cheekFold(const Vector3& q) const;
    [[nodiscard]] float nose(const Vector3& p, float d) const;
    [[nodiscard]] float mouth(const Vector3& p, float d) const;
    [[nodiscard]] float eyes(const Vector3& p, float d) const;
    [[nodiscard]] float skin(const Vector3& p) const;
    [[nodiscard]] float locks(const Vector3& p) const;
    [[nodiscard]] float hairField(const Vector3& p) const;
    [[nodiscard]] Cover scalp(const Vector3& p) const;
    [[nodiscard]] Cover beard(const Vector3& p) const;
    [[nodiscard]] float brow(const Vector3& p) const;
    [[nodiscard]] float clothField(const Vector3& p) const;
    [[nodiscard]] Vector3 skinColour(const Vector3& p) const;

    const PersonTraits& t_;
};

}  // namespace marrowby
