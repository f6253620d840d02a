// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Storage/UnlockDataEraser.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Report = UnlockDataEraser::Report;

struct Bench : VaultFixture {
    FaceStore faces{facesFile, *vault, cipher, mainThread, macWords};
    CredentialStore credentials{passwordFile, *vault};

    void fill() {
        EXPECT_EQ(problemOf(unlock().value()), std::nullopt);
        EXPECT_TRUE(faces.load());
        EXPECT_TRUE(faces.saveIdentity({FaceSample()}, "Ann", "m-1", 0));
        auto password = SecretBytes::copyOf(bytesOf("p")).value();
        EXPECT_TRUE(credentials.save(password));
    }
    Report erase() { return UnlockDataEraser::erase(faces, credentials, *vault, macWords); }
};

const Report everything{
    .removedFaces = true, .removedPassword = true, .removedKey = true, .problems = {}};

TEST(UnlockDataEraser, keepsTheKeyWhileAFileRemains) {
    Bench bench;
    bench.fill();
    bench.fileSystem.deny(bench.folder.facesFile());
    EXPECT_EQ(bench.erase(), (Report{.removedFaces = false,
                                     .removedPassword = true,
                                     .removedKey = false,
                                     .problems = {"Faces: " + FakeFileSystem::error().message}}));
    EXPECT_TRUE(bench.keyStore.key);
    EXPECT_FALSE(bench.vault->isUnlocked());
    EXPECT_EQ(bench.faces.identities().size(), 1U);

    bench.fileSystem.heal();
    bench.fill();
    bench.fileSystem.deny(bench.folder.passwordFile());
    EXPECT_FALSE(bench.erase().removedPassword);
    EXPECT_TRUE(bench.keyStore.key);
    bench.fileSystem.heal();
    EXPECT_EQ(bench.erase(), everything);
    EXPECT_TRUE(bench.fileSystem.files().empty());
    EXPECT_FALSE(bench.keyStore.key);
    EXPECT_TRUE(bench.faces.identities().empty());
    EXPECT_EQ(bench.erase(), everything) << "nothing is saved";

    bench.fill();
    bench.keyStore.failing.emplace(FakeKeyStore::Operation::remove,
                                   KeychainError::Status{.code = -61, .message = {}});
    EXPECT_EQ(bench.erase(), (Report{.removedFaces = true,
                                     .removedPassword = true,
                                     .removedKey = false,
                                     .problems = {"Key: Keychain: error -61"}}));
    EXPECT_TRUE(bench.vault->isUnlocked());
}

}  // namespace
}  // namespace marrowby
