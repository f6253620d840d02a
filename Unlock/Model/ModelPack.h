// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Platform/ModelFiles.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <expected>
#include <filesystem>
#include <string>

namespace marrowby {

/// Why a pack of models cannot be used.
struct ModelPackError {
    /// What is wrong with which file, as a clause for the user.
    std::string reason;
    friend bool operator==(const ModelPackError&, const ModelPackError&) = default;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const ModelPackError& error);

/// The models that the application uses: files in one folder.
struct ModelPack {
    std::filesystem::path folder;
    /// As its manifest says.
    std::string name = {};
    std::string embedderFile;
    std::string embedderIdentifier;
    std::string realFaceFile;
    std::string finderFile = {};
    std::string landmarksFile = {};
    std::string realFaceIdentifier = std::string(MiniFASNet::expectedIdentifier);
    /// Of the files as read; empty where none was computed.
    ModelSums sums = {};
    /// The manifest names the publishers' files as its origins, and the finder, which is used as
    /// published, is theirs.
    bool isPublished = false;

    /// Of the model in this role; empty where none was computed.
    [[nodiscard]] std::string sumOf(const std::string& role) const;
    /// The name, as {detail}, and whether the files are the published ones.
    [[nodiscard]] Phrase knownAs() const;
    [[nodiscard]] std::string title() const;

    static constexpr const char* manifestFile = "pack.json";
    /// Trained on drawn people; protects nobody.
    static constexpr const char* rehearsalName = "rehearsal";
    static constexpr const char* standardName = "standard";
    [[nodiscard]] bool knowsRealFaces() const { return name != rehearsalName; }

    /// Reads the folder's manifest and compares every file with it: its SHA-256, its identifier,
    /// and its inputs and outputs. A pack with anything missing or changed is refused.
    [[nodiscard]] static std::expected<ModelPack, ModelPackError> read(
        const std::filesystem::path& folder, const ModelFiles& files);
};

}  // namespace marrowby
