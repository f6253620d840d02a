// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Unlock/Model/EnrollmentCapture.h"
#include "Unlock/Model/ModelPack.h"
#include "Unlock/Model/Outcome.h"
#include "Unlock/Model/UnlockPlatform.h"
#include "UnlockCore/Engine/LogLine.h"
#include "UnlockCore/Engine/ScanConfiguration.h"
#include "UnlockCore/Foundation/Phrase.h"
#include "UnlockCore/Foundation/SecretBytes.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Foundation/UUID.h"
#include "UnlockCore/Foundation/WeakSelf.h"
#include "UnlockCore/LockScreenServices/VaultAutoLocker.h"
#include "UnlockCore/Status/UnlockStatus.h"
#include "UnlockCore/Storage/AppDataFolder.h"
#include "UnlockCore/Storage/CredentialStore.h"
#include "UnlockCore/Storage/FaceStore.h"
#include "UnlockCore/Storage/Vault.h"

#include <expected>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace marrowby {

/// The faces, the password and the vault that encrypts both. Loads the faces whenever the vault
/// opens, and locks it on time whoever opened it. Main thread; the references outlive this.
class ProtectedData {
  public:
    /// What the owner is asked to open the vault for.
    enum class Purpose { showOrChange, savePassword, saveFaceAndPassword };

    struct Callbacks {
        /// The vault was opened, and the faces loaded or not, or it was locked.
        std::function<void(const Outcome& loaded)> onVaultChange;
        std::function<void(const LogLine&)> onLog;
        /// How long the vault may go unused; none: for ever.
        std::function<std::optional<TimeInterval>()> autoLockLimit;
    };

    ProtectedData(const UnlockPlatform& platform, AppDataFolder folder, const ModelPack& models,
                  Callbacks callbacks);
    ~ProtectedData() { weakSelf_.expire(); }
    ProtectedData(const ProtectedData&) = delete;
    ProtectedData& operator=(const ProtectedData&) = delete;

    /// At least one face is saved. Before the vault was opened: there is a file of faces.
    [[nodiscard]] bool isEnrolled() const;
    [[nodiscard]] bool hasPassword() const { return credentials_.hasPassword(); }
    [[nodiscard]] bool isOpen() const { return vault_.isUnlocked(); }
    /// Empty until the vault was opened.
    [[nodiscard]] const std::vector<FaceIdentity>& faces() const { return faces_.identities(); }
    /// Those for which isComparable() holds.
    [[nodiscard]] const EnrolledFaces& comparableFaces() const { return comparableFaces_; }
    /// Saved with the models that are here now; others cannot be matched.
    [[nodiscard]] bool isComparable(const FaceIdentity& face) const {
        return face.models == models_.sums;
    }
    /// There are enabled faces, none of them comparable.
    [[nodiscard]] bool haveModelsChanged() const;
    /// Why what is saved could not be opened when it was tried last.
    [[nodiscard]] const std::optional<SavedDataFault>& fault() const { return fault_; }
    [[nodiscard]] const CredentialStore& credentials() const { return credentials_; }

    /// Asks the owner if need be.
    void open(Purpose purpose, Completion completion);
    void lock() { vault_.lock(); }

    // These need the open vault.

    /// In place of the face `replacing`, else as another one.
    [[nodiscard]] Outcome saveFace(const CapturedFace& face, const std::string& name,
                                   std::optional<UUID> replacing);
    [[nodiscard]] Outcome renameFace(UUID id, const std::string& name);
    [[nodiscard]] Outcome setFaceEnabled(UUID id, bool enabled);
    [[nodiscard]] Outcome removeFace(UUID id);
    /// Wipes `password`, saved or not.
    [[nodiscard]] Outcome savePassword(SecretBytes& password);

    /// Faces, password and key; locks the vault.
    [[nodiscard]] Outcome eraseEverything();

  private:
    void vaultChanged();
    [[nodiscard]] std::expected<void, StorageError> load();
    [[nodiscard]] std::optional<SavedDataFault> passwordFault() const;
    void updateComparableFaces();
    [[nodiscard]] Outcome afterChange(const std::expected<void, StorageError>& result,
                                      Phrase failure);

    const UnlockPlatform& platform_;
    const AppDataFolder folder_;
    const ModelPack& models_;
    const Callbacks callbacks_;
    /// Declared before the vault, which needs a handle; expires in the destructor.
    WeakSelf<ProtectedData> weakSelf_{this};
    Vault vault_;
    FaceStore faces_;
    CredentialStore credentials_;
    VaultAutoLocker autoLocker_;
    std::optional<SavedDataFault> fault_;
    EnrolledFaces comparableFaces_ = std::make_shared<const std::vector<FaceIdentity>>();
};

}  // namespace marrowby
