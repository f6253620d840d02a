// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/ModelLoaders.h"

#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

namespace marrowby {

namespace {

/// Says of a missing file what this platform's user can do.
template <typename T, typename Error>
std::expected<T, Error> withWords(std::expected<T, Error> loaded, const PlatformWords& words) {
    if (loaded) return loaded;
    if (auto* missing = std::get_if<modelerror::NotFound>(&loaded.error())) {
        missing->place = words.missingModel.place;
        missing->remedy = words.missingModel.remedy;
    }
    return loaded;
}

}  // namespace

CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack, NeuralModels& models,
                                               const Imaging& imaging, const PlatformWords& words) {
    return [pack, &models, &imaging,
            &words]() -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
        return withWords(SFaceEmbedder::load(pack.folder,
                                             {.fileName = pack.embedderFile,
                                              .modelIdentifier = pack.embedderIdentifier,
                                              .sha256 = pack.sumOf("embedder")},
                                             models, imaging),
                         words);
    };
}

CameraFaceScanner::LoadAntiSpoof antiSpoofLoader(const ModelPack& pack, NeuralModels& models,
                                                 const PlatformWords& words) {
    return [pack, &models, &words] {
        return withWords(
            MiniFASNet::load(pack.folder, models, NeuralModels::ComputeUnits::all,
                             pack.realFaceFile, pack.realFaceIdentifier, pack.sumOf("realFace")),
            words);
    };
}

}  // namespace marrowby
