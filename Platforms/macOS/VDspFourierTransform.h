// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FourierTransform.h"

#include <memory>

struct OpaqueFFTSetup;

namespace marrowby {

/// vDSP’s complex transform, unscaled. Never throws; fails when its tables could not be allocated.
class VDspFourierTransform final : public FourierTransform {
  public:
    VDspFourierTransform();

    [[nodiscard]] bool forward(Plane real, Plane imaginary) const override;

  private:
    struct Destroyer {
        void operator()(OpaqueFFTSetup* setup) const;
    };
    /// Read-only tables, shared by any number of threads.
    const std::unique_ptr<OpaqueFFTSetup, Destroyer> setup_;
};

}  // namespace marrowby
