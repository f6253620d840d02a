// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/FaceStore.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/Text.h"
#include "UnlockCore/Storage/FaceIdentityCoding.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

namespace marrowby {

namespace {

constexpr auto unnamed = Phrase("Face");

}  // namespace

FaceStore::FaceStore(SealedFile file, Vault& vault, AuthenticatedCipher& cipher, SystemClock& clock,
                     const PlatformWords& words)
    : file_(std::move(file)), vault_(vault), cipher_(cipher), clock_(clock), words_(words) {}

std::expected<void, StorageError> FaceStore::load() {
    auto read = file_.exists() ? readFile() : std::vector<FaceIdentity>();
    if (!read && read.error() == StorageError(VaultError::locked)) {
        return std::unexpected(VaultError::locked);
    }
    isLoaded_ = read.has_value();
    if (isLoaded_) {
        identities_ = std::move(*read);
        loadFailure_.reset();
        return {};
    }
    identities_.clear();
    loadFailure_ = description(read.error(), words_);
    return std::unexpected(FaceStoreError(FaceStoreError::Unreadable{*loadFailure_}));
}

std::expected<std::vector<FaceIdentity>, StorageError> FaceStore::readFile() {
    const auto plaintext = file_.read(vault_);
    if (!plaintext) return std::unexpected(plaintext.error());
    auto decoded = faceidentitycoding::decode(plaintext->values());
    if (!decoded) return std::unexpected(std::move(decoded.error()));
    return std::move(*decoded);
}

std::vector<FaceIdentity> FaceStore::enabledIdentities() const {
    std::vector<FaceIdentity> enabled;
    std::ranges::copy_if(identities_, std::back_inserter(enabled), &FaceIdentity::isEnabled);
    return enabled;
}

std::expected<void, StorageError> FaceStore::saveIdentity(
    std::vector<FaceSample> samples, std::string_view name, std::string modelIdentifier,
    std::int64_t dimension, std::optional<UUID> replacing, ModelSums models) {
    if (samples.empty()) return std::unexpected(FaceStoreError(FaceStoreError::EmptyEnrolment{}));
    std::string newName = trimmed(name);
    auto changed = identities_;
    const auto old = std::ranges::find(
        changed, replacing, [](const FaceIdentity& face) { return std::optional(face.id); });
    if (replacing && old != changed.end()) {
        old->samples = std::move(samples);
        old->modelIdentifier = std::move(modelIdentifier);
        old->dimension = dimension;
        old->models = std::move(models);
        if (!newName.empty()) old->name = std::move(newName);
    } else {
        std::array<std::uint8_t, 16> random{};
        if (!cipher_.random(random)) return std::unexpected(VaultError::sealFailed);
        changed.push_back({.id = UUID::fromRandomBytes(random),
                           .name = newName.empty() ? translated(unnamed) : std::move(newName),
                           .samples = std::move(samples),
                           .modelIdentifier = std::move(modelIdentifier),
                           .dimension = dimension,
                           .createdAt = clock_.now(),
                           .isEnabled = true,
                           .models = std::move(models)});
    }
    return commit(std::move(changed));
}

std::expected<void, StorageError> FaceStore::adoptModels(const ModelSums& models) {
    auto changed = identities_;
    for (FaceIdentity& face : changed) {
        if (face.models.empty()) face.models = models;
    }
    if (changed == identities_) return requireLoaded();
    return commit(std::move(changed));
}

std::expected<void, StorageError> FaceStore::setEnabled(bool enabled, UUID id) {
    if (auto loaded = requireLoaded(); !loaded) return loaded;
    auto changed = identities_;
    const auto face = std::ranges::find(changed, id, &FaceIdentity::id);
    if (face == changed.end()) return {};
    face->isEnabled = enabled;
    return commit(std::move(changed));
}

std::expected<void, StorageError> FaceStore::rename(UUID id, std::string_view name) {
    std::string newName = trimmed(name);
    if (newName.empty()) return {};
    if (auto loaded = requireLoaded(); !loaded) return loaded;
    auto changed = identities_;
    const auto face = std::ranges::find(changed, id, &FaceIdentity::id);
    if (face == changed.end()) return {};
    face->name = std::move(newName);
    return commit(std::move(changed));
}

std::expected<void, StorageError> FaceStore::remove(UUID id) {
    auto changed = identities_;
    std::erase_if(changed, [&](const FaceIdentity& face) { return face.id == id; });
    return commit(std::move(changed));
}

std::expected<void, StorageError> FaceStore::removeAll() {
    if (auto removed = file_.remove(); !removed) return removed;
    identities_.clear();
    isLoaded_ = true;
    loadFailure_.reset();
    return {};
}

std::expected<void, StorageError> FaceStore::requireLoaded() const {
    if (isLoaded_) return {};
    if (!loadFailure_) return std::unexpected(FaceStoreError(FaceStoreError::NotLoaded{}));
    return std::unexpected(FaceStoreError(FaceStoreError::Unreadable{*loadFailure_}));
}

std::expected<void, StorageError> FaceStore::commit(std::vector<FaceIdentity> changed) {
    if (auto loaded = requireLoaded(); !loaded) return loaded;
    const auto text = faceidentitycoding::encode(changed);
    if (!text) return std::unexpected(text.error());
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(text->data()), text->size());
    if (auto written = file_.write(bytes, vault_); !written) return written;
    identities_ = std::move(changed);
    return {};
}

}  // namespace marrowby
