// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Recognition/FaceEmbedding.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace marrowby {

/// The SHA-256 of each model's file, 64 lower-case digits, by the model's role.
using ModelSums = std::map<std::string, std::string>;

/// One captured view of an enrolled face.
struct FaceSample {
    /// Normalised.
    Embedding embedding;
    /// The enrolment pose it was taken in.
    std::optional<std::string> pose;
    Date capturedAt;
    /// Capture quality, 0…1.
    std::optional<float> quality;

    friend bool operator==(const FaceSample&, const FaceSample&) = default;
};

/// An enrolled face; a person may have several. A disabled one is kept but never matched.
struct FaceIdentity {
    UUID id;
    std::string name;
    std::vector<FaceSample> samples;
    /// Which embedding model made the samples, and how long they are.
    std::string modelIdentifier;
    std::int64_t dimension = 0;
    Date createdAt;
    bool isEnabled = true;
    /// The models that made the samples; empty where unknown.
    ModelSums models = {};

    friend bool operator==(const FaceIdentity&, const FaceIdentity&) = default;
};

}  // namespace marrowby
