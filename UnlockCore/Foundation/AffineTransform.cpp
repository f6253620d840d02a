#include "UnlockCore/Foundation/AffineTransform.h"

namespace marrowby {

AffineTransform AffineTransform::then(const AffineTransform& next) const {
    return {.a = next.a * a + next.c * b,
            .b = next.b * a + next.d * b,
            .c = next.a * c + next.c * d,
            .d = next.b * c + next.d * d,
            .tx = next.a * tx + next.c * ty + next.tx,
            .ty = next.b * tx + next.d * ty + next.ty};
}

}  // namespace marrowby
