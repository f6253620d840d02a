// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Scenes/ModelFolder.h"

#include "Platforms/Linux/Vision/OnnxModelFiles.h"

#include <utility>

namespace marrowby {

std::expected<ModelPack, std::string> modelsIn(const std::filesystem::path& folder) {
    std::error_code error;
    if (std::filesystem::exists(folder / ModelPack::manifestFile, error)) {
        auto pack = ModelPack::read(folder, OnnxModelFiles());
        if (!pack) return std::unexpected(description(pack.error()));
        return *std::move(pack);
    }
    ModelPack published{.folder = folder,
                        .name = "published",
                        .embedderFile = "Embedder128.onnx",
                        .embedderIdentifier = "mobilefacenet-128-test-1",
                        .realFaceFile = "MiniFASNet.onnx",
                        .finderFile = "face_detection_yunet_2023mar.onnx",
                        .landmarksFile = "Landmarks98.onnx"};
    for (const std::string& file : {published.embedderFile, published.realFaceFile,
                                    published.finderFile, published.landmarksFile}) {
        if (std::filesystem::is_regular_file(folder / file, error)) continue;
        return std::unexpected("The model " + file + " is missing from the folder “" +
                               folder.string() + "”.");
    }
    return published;
}

}  // namespace marrowby
