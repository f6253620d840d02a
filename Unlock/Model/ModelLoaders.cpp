#include "Unlock/Model/ModelLoaders.h"

#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Recognition/SFaceEmbedder.h"

namespace marrowby {

CameraFaceScanner::LoadEmbedder embedderLoader(const ModelPack& pack,
                                               const UnlockPlatform& platform) {
    return [pack, &models = platform.models, &imaging = platform.imaging]()
               -> std::expected<std::shared_ptr<FaceEmbedder>, FaceModelError> {
        return SFaceEmbedder::load(pack.folder,
                                   {.fileName = pack.embedderFile,
                                    .modelIdentifier = pack.embedderIdentifier,
                                    .sha256 = pack.sumOf("embedder")},
                                   models, imaging);
    };
}

CameraFaceScanner::LoadAntiSpoof antiSpoofLoader(const ModelPack& pack,
                                                 const UnlockPlatform& platform) {
    return [pack, &models = platform.models] {
        return MiniFASNet::load(pack.folder, models, NeuralModels::ComputeUnits::all,
                                pack.realFaceFile, pack.realFaceIdentifier, pack.sumOf("realFace"));
    };
}

}  // namespace marrowby
