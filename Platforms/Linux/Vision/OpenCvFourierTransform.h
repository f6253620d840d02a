// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/FourierTransform.h"

namespace marrowby {

class OpenCvFourierTransform final : public FourierTransform {
  public:
    [[nodiscard]] bool forward(Plane real, Plane imaginary) const override;
};

}  // namespace marrowby
