#include "Platforms/Linux/OpenCvFourierTransform.h"
#include "Tests/Platforms/FourierContract.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(OpenCvFourierTransform, agreesWithTheDefinition) {
    expectTheDefinition(OpenCvFourierTransform());
}

}  // namespace
}  // namespace marrowby
