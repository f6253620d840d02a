// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/ModelPack.h"
#include "UnlockCore/LockScreenServices/CameraFaceScanner.h"
#include "UnlockCore/Platform/Imaging.h"
#include "UnlockCore/Platform/NeuralModel.h"
#include "UnlockCore/Platform/PlatformWords.h"

namespace marrowby {

/// How the engine, the enrolment and the self-check load their models. What is given by reference
/// outlives them. Any thread.
[[nodiscard]] CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack,
                                                             NeuralModels& models,
                                                             const Imaging& imaging,
                                                             const PlatformWords& words);
[[nodiscard]] CameraFaceScanner::LoadAntiSpoof antiSpoofLoader(const ModelPack& pack,
                                                               NeuralModels& models,
                                                               const PlatformWords& words);

}  // namespace marrowby
