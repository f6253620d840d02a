#include "UnlockCore/Storage/FaceIdentityCodingError.h"

namespace marrowby {

std::string description(const FaceIdentityCodingError& error) {
    return "The saved face isn’t in the expected format: " + error.reason + ".";
}

}  // namespace marrowby
