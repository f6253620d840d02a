// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Storage/UnlockDataEraser.h"

#include "UnlockCore/Foundation/Phrase.h"

namespace marrowby {

UnlockDataEraser::Report UnlockDataEraser::erase(FaceStore& faces, CredentialStore& credentials,
                                                 Vault& vault, const PlatformWords& words) {
    Report report;
    if (const auto removed = faces.removeAll()) {
        report.removedFaces = true;
    } else {
        report.problems.push_back(
            translated("Faces: {problem}", {{"problem", description(removed.error(), words)}}));
    }
    if (const auto removed = credentials.remove()) {
        report.removedPassword = true;
    } else {
        report.problems.push_back(
            translated("Password: {problem}", {{"problem", description(removed.error(), words)}}));
    }
    if (!report.removedFaces || !report.removedPassword) {
        // The key stays: without it, what remains could not be opened.
        vault.lock();
        return report;
    }
    if (const auto removed = vault.keyStore().deleteKey()) {
        vault.lock();
        report.removedKey = true;
    } else {
        report.problems.push_back(
            translated("Key: {problem}", {{"problem", description(removed.error(), words)}}));
    }
    return report;
}

}  // namespace marrowby
