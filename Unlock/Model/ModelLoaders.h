// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"

namespace marrowby {

/// How the engine and the enrolment load their models. The platform outlives them. Any thread.
[[nodiscard]] CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack,
                                                             const UnlockPlatform& platform);
[[nodiscard]] CameraFaceScanner::LoadAntiSpoof antiSpoofLoader(const ModelPack& pack,
                                                               const UnlockPlatform& platform);

}  // namespace marrowby
