#include "Rehearsal/People/LinearImage.h"

namespace marrowby {

LinearImage::LinearImage(int imageWidth, int imageHeight, const Vector3& colour)
    : width(imageWidth), height(imageHeight) {
    const std::size_t count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    coverage.resize(count);
    rgb.reserve(count * 3);
    for (std::size_t i = 0; i < count; ++i) {
        rgb.insert(rgb.end(), {colour.x, colour.y, colour.z});
    }
}

}  // namespace marrowby
