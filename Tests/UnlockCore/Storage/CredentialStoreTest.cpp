// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "UnlockCore/Storage/CredentialStore.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct Bench : VaultFixture {
    CredentialStore store{passwordFile, *vault};

    Bench() { (void)unlock(); }
    std::optional<StorageError> save(std::string_view text) {
        auto password = SecretBytes::copyOf(bytesOf(text)).value();
        auto problem = problemOf(store.save(password));
        EXPECT_EQ(password.size(), text.size());
        EXPECT_TRUE(std::ranges::all_of(password.values(), [](auto byte) { return byte == 0; }));
        return problem;
    }
    std::expected<std::string, StorageError> password() {
        return store.withPassword([](std::span<const std::uint8_t> bytes) {
            return std::string(bytes.begin(), bytes.end());
        });
    }
};

TEST(CredentialStore, keepsThePasswordAndWipesTheCallersCopy) {
    Bench bench;
    EXPECT_FALSE(bench.store.hasPassword());
    EXPECT_EQ(problemOf(bench.password()), CredentialError::none);
    EXPECT_EQ(bench.save(""), CredentialError::empty);
    EXPECT_FALSE(bench.store.hasPassword());

    EXPECT_EQ(bench.save("grün 🔑"), std::nullopt);
    EXPECT_EQ(bench.password(), "grün 🔑");

    bench.fileSystem.deny(bench.folder.passwordFile());
    EXPECT_EQ(bench.save("other"), FakeFileSystem::error());
    EXPECT_EQ(problemOf(bench.store.remove()), FakeFileSystem::error());
    bench.fileSystem.heal();
    EXPECT_EQ(bench.password(), "grün 🔑");

    bench.vault->lock();
    EXPECT_EQ(bench.save("other"), VaultError::locked);
    EXPECT_TRUE(bench.store.hasPassword());
    EXPECT_EQ(problemOf(bench.password()), VaultError::locked);
    EXPECT_TRUE(bench.store.remove());
    EXPECT_TRUE(bench.store.remove());
    EXPECT_FALSE(bench.store.hasPassword());
}

TEST(CredentialStore, readingCountsAsUseOfTheVault) {
    Bench bench;
    ASSERT_EQ(bench.save("p"), std::nullopt);
    const Date opened = bench.mainThread.now();
    bench.mainThread.advance(TimeInterval(60));
    // Recorded before the password is used.
    EXPECT_TRUE(bench.store.withPassword([&](std::span<const std::uint8_t>) {
        EXPECT_EQ(bench.vault->lastActivityAt(), opened + TimeInterval(60));
    }));
    bench.fileSystem.put(bench.folder.passwordFile(),
                         bench.vault->seal(bytesOf("[]"), VaultPurpose::faces).value());
    bench.mainThread.advance(TimeInterval(60));
    EXPECT_EQ(problemOf(bench.password()), VaultError::openFailed);
    EXPECT_EQ(bench.vault->lastActivityAt(), opened + TimeInterval(60));
}

}  // namespace
}  // namespace marrowby
