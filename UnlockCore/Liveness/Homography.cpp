#include "UnlockCore/Liveness/Homography.h"

#include <cmath>

namespace marrowby {

Point Homography::apply(const Point& point) const {
    const double w = h31 * point.x + h32 * point.y + h33;
    if (!(std::abs(w) > 1e-12)) return point;
    return {(h11 * point.x + h12 * point.y + h13) / w, (h21 * point.x + h22 * point.y + h23) / w};
}

}  // namespace marrowby
