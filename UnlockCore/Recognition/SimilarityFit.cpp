#include "UnlockCore/Recognition/SimilarityFit.h"

#include "UnlockCore/Recognition/MeanPoint.h"

#include <cstddef>

namespace marrowby {

std::optional<AffineTransform> fitSimilarity(std::span<const Point> source,
                                             std::span<const Point> destination) {
    const auto p = meanPoint(source);
    const auto q = meanPoint(destination);
    if (!p || !q || source.size() != destination.size()) return std::nullopt;

    double spread = 0;
    double along = 0;
    double across = 0;
    for (std::size_t i = 0; i < source.size(); ++i) {
        const Point d{source[i].x - p->x, source[i].y - p->y};
        const Point u{destination[i].x - q->x, destination[i].y - q->y};
        spread += d.x * d.x + d.y * d.y;
        along += d.x * u.x + d.y * u.y;
        across += d.x * u.y - d.y * u.x;
    }
    if (!(spread > 1e-12)) return std::nullopt;
    const double a = along / spread;
    const double b = across / spread;
    return AffineTransform{.a = a,
                           .b = b,
                           .c = -b,
                           .d = a,
                           .tx = q->x - (a * p->x - b * p->y),
                           .ty = q->y - (b * p->x + a * p->y)};
}

}  // namespace marrowby
