// SPDX-License-Identifier: Apache-2.0
#include "Unlock/Model/ProtectedData.h"

#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Storage/UnlockDataEraser.h"

#include <algorithm>
#include <tuple>
#include <utility>
#include <variant>

namespace marrowby {

namespace {

std::string reason(ProtectedData::Purpose purpose, const PlatformWords& words,
                   LockOpening opening) {
    const Filling password("password", words.password.inSentence);
    switch (purpose) {
        case ProtectedData::Purpose::showOrChange:
            return opening == LockOpening::typing
                       ? translated("open your saved face and {password}", {password})
                       : translated("open your saved face");
        case ProtectedData::Purpose::savePassword:
            return translated("save your {password}", {password});
        case ProtectedData::Purpose::saveFaceAndPassword:
            return translated("save your face and {password}", {password});
    }
    return {};
}

Outcome outcomeOf(const std::expected<void, StorageError>& result, const PlatformWords& words) {
    if (result) return {};
    const auto* refused = std::get_if<OwnerCheckError>(&result.error());
    if (refused != nullptr && std::holds_alternative<OwnerCheckError::Cancelled>(*refused)) {
        return std::unexpected(translated("{check} was cancelled, so nothing was saved.",
                                          {{"check", words.ownerCheck.prompt}}));
    }
    return std::unexpected(description(result.error(), words));
}

/// Says what was not done, with {reason}, where the disk is full or may not be written to.
Outcome outcomeOfWriting(const std::expected<void, StorageError>& result, Phrase failure,
                         const PlatformWords& words) {
    const auto* file = result ? nullptr : std::get_if<FileError>(&result.error());
    if (file == nullptr) return outcomeOf(result, words);
    return std::unexpected(
        translated(failure, {{"reason", file->message}, {"password", words.password.inSentence}}));
}

/// None of an error that says nothing of what is saved, such as the owner’s no.
std::optional<SavedDataFault> faultOf(const StorageError& error) {
    if (std::holds_alternative<KeychainError>(error)) return SavedDataFault::keyStoreAway;
    const auto* vault = std::get_if<VaultError>(&error);
    if (vault != nullptr &&
        (*vault == VaultError::keyMissingButDataExists || *vault == VaultError::badKey))
        return SavedDataFault::keyMissing;
    return std::nullopt;
}

}  // namespace

ProtectedData::ProtectedData(const UnlockPlatform& platform, AppDataFolder folder,
                             const ModelPack& models, Callbacks callbacks)
    : platform_(platform),
      folder_(std::move(folder)),
      models_(models),
      callbacks_(std::move(callbacks)),
      vault_(platform_.keyStore, platform_.ownerCheck,
             [&files = platform_.files, folder = folder_] {
                 return files.exists(folder.facesFile()) || files.exists(folder.passwordFile());
             },
             {.cipher = platform_.cipher,
              .mainThread = platform_.mainThread,
              .clock = platform_.clock,
              .didChange =
                  [changed = weakSelf_.guarded(&ProtectedData::vaultChanged),
                   &mainThread = platform_.mainThread, announce = platform_.vaultDidChange] {
                      if (announce) announce();
                      mainThread.post(changed);
                  }}),
      faces_({platform_.files, folder_.facesFile(), VaultPurpose::faces}, vault_, platform_.cipher,
             platform_.clock, platform_.words),
      credentials_({platform_.files, folder_.passwordFile(), VaultPurpose::password}, vault_),
      autoLocker_(vault_, callbacks_.autoLockLimit, platform_.mainThread, platform_.clock) {}

bool ProtectedData::isEnrolled() const {
    if (faces_.isLoaded()) return !faces_.identities().empty();
    return !faces_.loadFailure() && platform_.files.exists(folder_.facesFile());
}

bool ProtectedData::haveModelsChanged() const {
    const std::vector<FaceIdentity> enabled = faces_.enabledIdentities();
    return !enabled.empty() && std::ranges::none_of(enabled, [this](const FaceIdentity& face) {
        return isComparable(face);
    });
}

void ProtectedData::open(Purpose purpose, Completion completion) {
    vault_.unlock(
        reason(purpose, platform_.words, platform_.opening()),
        weakSelf_.guarded([completion = std::move(completion)](
                              ProtectedData& self, std::expected<void, StorageError> result) {
            // vaultChanged() may still be posted.
            // Where the owner says no, what was found before still holds.
            if (!result) self.fault_ = faultOf(result.error()).or_else([&] { return self.fault_; });
            if (result && !self.faces_.isLoaded()) result = self.load();
            completion(outcomeOf(result, self.platform_.words));
        }));
}

Outcome ProtectedData::saveFace(const CapturedFace& face, const std::string& name,
                                std::optional<UUID> replacing) {
    return afterChange(faces_.saveIdentity(face.samples, name, face.modelIdentifier, face.dimension,
                                           replacing, models_.sums),
                       Phrase("Your face wasn’t saved: {reason}."));
}

Outcome ProtectedData::renameFace(UUID id, const std::string& name) {
    return afterChange(faces_.rename(id, name), Phrase("The name wasn’t saved: {reason}."));
}

Outcome ProtectedData::setFaceEnabled(UUID id, bool enabled) {
    return afterChange(faces_.setEnabled(enabled, id),
                       Phrase("The change wasn’t saved: {reason}."));
}

Outcome ProtectedData::removeFace(UUID id) {
    // No faces, no file: isEnrolled() must tell before the vault is opened.
    const bool isLast = faces().size() == 1 && faces().front().id == id;
    return afterChange(isLast ? faces_.removeAll() : faces_.remove(id),
                       Phrase("The face wasn’t removed: {reason}."));
}

Outcome ProtectedData::savePassword(SecretBytes& password) {
    const auto saved = credentials_.save(password);
    if (saved && fault_ == SavedDataFault::passwordDamaged) fault_.reset();
    return outcomeOfWriting(saved, Phrase("Your {password} wasn’t saved: {reason}."),
                            platform_.words);
}

Outcome ProtectedData::eraseEverything() {
    const auto report = UnlockDataEraser::erase(faces_, credentials_, vault_, platform_.words);
    updateComparableFaces();
    if (report.removedFaces && report.removedPassword) fault_.reset();
    if (report.problems.empty()) return {};
    std::string problems;
    for (const std::string& problem : report.problems)
        problems += (problems.empty() ? "" : " ") + problem;
    return std::unexpected(std::move(problems));
}

void ProtectedData::vaultChanged() {
    Outcome loaded;
    if (vault_.isUnlocked()) {
        autoLocker_.start();
        loaded = outcomeOf(load(), platform_.words);
    } else {
        autoLocker_.stop();
    }
    callbacks_.onVaultChange(loaded);
}

std::expected<void, StorageError> ProtectedData::load() {
    auto loaded = faces_.load();
    // Files of versions that kept no sums were made with the published models. A failure to write
    // is tried again at the next load.
    fault_ = loaded ? passwordFault() : SavedDataFault::faceDamaged;
    if (loaded && models_.isPublished) std::ignore = faces_.adoptModels(models_.sums);
    updateComparableFaces();
    if (loaded && haveModelsChanged()) {
        callbacks_.onLog({.event = logevent::modelsChanged,
                          .sentence = Phrase("{what}"),
                          .what = modelsChangedTitle});
    }
    return loaded;
}

std::optional<SavedDataFault> ProtectedData::passwordFault() const {
    if (!credentials_.hasPassword() || credentials_.withPassword([](const auto& /*text*/) {}))
        return std::nullopt;
    // Unless the vault was locked meanwhile.
    return credentials_.isOpen() ? std::optional(SavedDataFault::passwordDamaged) : std::nullopt;
}

void ProtectedData::updateComparableFaces() {
    std::vector<FaceIdentity> comparable;
    std::ranges::copy_if(faces(), std::back_inserter(comparable),
                         [this](const FaceIdentity& face) { return isComparable(face); });
    comparableFaces_ = std::make_shared<const std::vector<FaceIdentity>>(std::move(comparable));
}

Outcome ProtectedData::afterChange(const std::expected<void, StorageError>& result,
                                   Phrase failure) {
    updateComparableFaces();
    return outcomeOfWriting(result, failure, platform_.words);
}

}  // namespace marrowby
