#pragma once

#include "UnlockCore/Platform/FourierTransform.h"

#include <memory>

struct OpaqueFFTSetup;

namespace marrowby {

/// vDSP’s complex transform, which does not scale forwards. It never throws; without memory for its
/// tables every transform fails.
class VDspFourierTransform final : public FourierTransform {
  public:
    VDspFourierTransform();

    [[nodiscard]] bool forward(Plane real, Plane imaginary) const override;

  private:
    struct Destroyer {
        void operator()(OpaqueFFTSetup* setup) const;
    };
    /// Tables that are only read: any number of threads share them.
    const std::unique_ptr<OpaqueFFTSetup, Destroyer> setup_;
};

}  // namespace marrowby
