#pragma once

#include "UnlockCore/Liveness/MiniFASNet.h"
#include "UnlockCore/Platform/ModelFiles.h"
#include "UnlockCore/Recognition/FaceIdentity.h"

#include <expected>
#include <filesystem>
#include <string>

namespace marrowby {

/// Why a pack of networks cannot be used.
struct ModelPackError {
    /// The network's name, or the pack's own file.
    std::string name;
    std::string reason;
    friend bool operator==(const ModelPackError&, const ModelPackError&) = default;
};

/// The sentence for the user.
[[nodiscard]] std::string description(const ModelPackError& error);

/// The networks of an application: one folder, a file each, and which embedder it is.
struct ModelPack {
    std::filesystem::path folder;
    /// As in “standard”, which its manifest gives it.
    std::string name = {};
    std::string embedderFile;
    std::string embedderIdentifier;
    std::string realFaceFile;
    std::string finderFile = {};
    std::string landmarksFile = {};
    std::string realFaceIdentifier = std::string(MiniFASNet::expectedIdentifier);
    /// Of the files as they were read; empty where nobody looked.
    ModelSums sums = {};
    /// The manifest names as its origins what the publishers gave out, and the finder, the one
    /// network that is used as it was published, is theirs.
    bool isPublished = false;

    /// Of the network in this role; empty where nobody looked.
    [[nodiscard]] std::string sumOf(const std::string& role) const;
    /// The name, and whether it is rightly borne.
    [[nodiscard]] std::string title() const;

    static constexpr const char* manifestFile = "pack.json";
    /// Of the networks that learned from drawn people, and protect nobody’s computer.
    static constexpr const char* rehearsalName = "rehearsal";
    static constexpr const char* standardName = "standard";
    [[nodiscard]] bool knowsRealFaces() const { return name != rehearsalName; }

    /// Reads the folder's manifest and compares every file with it: its SHA-256, its identifier,
    /// and its inputs and outputs. A pack with anything missing or changed is refused.
    [[nodiscard]] static std::expected<ModelPack, ModelPackError> read(
        const std::filesystem::path& folder, const ModelFiles& files);
};

}  // namespace marrowby
