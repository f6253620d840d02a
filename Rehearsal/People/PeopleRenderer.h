#pragma once

#include "Rehearsal/People/Expression.h"
#include "Rehearsal/People/FaceTruth.h"
#include "Rehearsal/People/Lighting.h"
#include "Rehearsal/People/LinearImage.h"
#include "Rehearsal/People/Person.h"
#include "Rehearsal/People/PersonPose.h"
#include "Rehearsal/People/PinholeCamera.h"

#include <memory>

namespace marrowby {

/// Draws people into pictures. The same input gives the same bytes in the same build. One thread at
/// a time.
class PeopleRenderer {
  public:
    PeopleRenderer();
    PeopleRenderer(PeopleRenderer&&) noexcept;
    PeopleRenderer& operator=(PeopleRenderer&&) noexcept;
    ~PeopleRenderer();

    /// Over what the image shows: of two people draw the farther one first. Edges are smooth. Parts
    /// nearer than 5 cm to the camera are left out.
    FaceTruth draw(LinearImage& image, const PinholeCamera& camera, const Person& person,
                   const PersonPose& pose, const Expression& expression = {},
                   const Lighting& lighting = {});

  private:
    struct Buffers;
    std::unique_ptr<Buffers> buffers_;
};

}  // namespace marrowby
