#pragma once

#include <filesystem>
#include <string>

namespace marrowby {

/// The networks that the core itself loads: one folder, a file each, and which embedder it is.
struct ModelPack {
    std::filesystem::path folder;
    std::string embedderFile;
    std::string embedderIdentifier;
    std::string realFaceFile;
};

}  // namespace marrowby
