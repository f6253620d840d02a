#include "UnlockCore/Liveness/ScreenCues.h"

#include "UnlockCore/Liveness/DrawnPixels.h"
#include "UnlockCore/Liveness/GlareCueExtractor.h"
#include "UnlockCore/Liveness/MoireCueExtractor.h"

namespace marrowby {

ScreenCues ScreenCues::measure(const Bitmap& image, const Imaging& imaging,
                               const FourierTransform& fourier) {
    const auto drawn = drawnPixels(image, imaging);
    if (!drawn) return {};
    return {.glare = glarecueextractor::sample(drawn->bytes(), drawn->width(), drawn->height()),
            .moire = moirecueextractor::sample(drawn->bytes(), drawn->width(), drawn->height(),
                                               fourier)};
}

}  // namespace marrowby
