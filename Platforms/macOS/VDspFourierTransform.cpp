// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/VDspFourierTransform.h"

#include <bit>

#include <Accelerate/Accelerate.h>

namespace marrowby {

namespace {

constexpr vDSP_Length sideLog2 = std::countr_zero(FourierTransform::side);
static_assert(std::size_t{1} << sideLog2 == FourierTransform::side);

}  // namespace

void VDspFourierTransform::Destroyer::operator()(OpaqueFFTSetup* setup) const {
    vDSP_destroy_fftsetup(setup);
}

VDspFourierTransform::VDspFourierTransform() : setup_(vDSP_create_fftsetup(sideLog2, kFFTRadix2)) {}

bool VDspFourierTransform::forward(Plane real, Plane imaginary) const {
    if (!setup_) return false;
    const DSPSplitComplex planes{.realp = real.data(), .imagp = imaginary.data()};
    vDSP_fft2d_zip(setup_.get(), &planes, 1, static_cast<vDSP_Stride>(side), sideLog2, sideLog2,
                   kFFTDirection_Forward);
    return true;
}

}  // namespace marrowby
