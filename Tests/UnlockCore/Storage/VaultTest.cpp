// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "UnlockCore/Storage/Vault.h"

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Result = std::expected<void, StorageError>;

Bytes sealed(VaultFixture& bench, std::string_view text, VaultPurpose purpose) {
    return bench.vault->seal(bytesOf(text), purpose).value();
}

std::optional<std::string> opened(VaultFixture& bench, const Bytes& blob, VaultPurpose purpose) {
    const auto plaintext = bench.vault->open(blob, purpose);
    if (!plaintext) return std::nullopt;
    return std::string(plaintext->values().begin(), plaintext->values().end());
}

TEST(Vault, makesAKeyOnceAndReusesIt) {
    VaultFixture bench;
    EXPECT_EQ(bench.unlock(), Result());
    ASSERT_TRUE(bench.keyStore.key);
    const Bytes key = *bench.keyStore.key;
    EXPECT_EQ(key.size(), 32U);
    EXPECT_NE(key, Bytes(32));
    const Bytes blob = sealed(bench, "secret", VaultPurpose::password);

    bench.vault = bench.makeVault();
    EXPECT_EQ(problemOf(bench.vault->open(blob, VaultPurpose::password)), VaultError::locked);
    EXPECT_EQ(problemOf(bench.vault->seal({}, VaultPurpose::faces)), VaultError::locked);
    EXPECT_EQ(bench.unlock(), Result());
    EXPECT_EQ(opened(bench, blob, VaultPurpose::password), "secret");
    EXPECT_EQ(bench.keyStore.key, key);

    EXPECT_EQ(bench.unlock(), Result());
    EXPECT_EQ(bench.owner.prompts.size(), 2U) << "an open vault asks nobody";
}

TEST(Vault, callersShareOnePromptAndItsOutcome) {
    for (const bool confirms : {true, false}) {
        VaultFixture bench;
        bench.owner.answer.reset();
        std::vector<bool> outcomes;
        const auto note = [&](const Result& result) {
            EXPECT_TRUE(bench.mainThread.isCurrent());
            outcomes.push_back(result.has_value());
        };
        bench.vault->unlock("first", note);
        bench.vault->unlock("second", note);
        bench.mainThread.runPosted();
        ASSERT_EQ(bench.owner.prompts.size(), 1U);
        EXPECT_EQ(bench.owner.prompts[0].reason, "first");
        EXPECT_TRUE(outcomes.empty());

        std::thread([&] { bench.owner.prompts[0].reply(confirms); }).join();
        EXPECT_TRUE(outcomes.empty()) << "not on the reply's thread";
        bench.mainThread.runPosted();
        EXPECT_EQ(outcomes, std::vector<bool>(2, confirms));
        EXPECT_EQ(bench.vault->isUnlocked(), confirms);

        // A second reply, and one that comes while the next prompt is open.
        bench.vault->lock();
        bench.vault->unlock("third", note);
        bench.owner.prompts[0].reply(true);
        bench.mainThread.runPosted();
        EXPECT_EQ(bench.owner.prompts.size(), 2U);
        EXPECT_EQ(outcomes.size(), 2U);
        EXPECT_FALSE(bench.vault->isUnlocked());
    }
}

TEST(Vault, mayBeDestroyedWhileThePromptIsOpen) {
    VaultFixture bench;
    bench.owner.answer.reset();
    bool isCalled = false;
    bench.vault->unlock("open it", [&](const Result&) { isCalled = true; });
    bench.vault.reset();
    bench.owner.prompts[0].reply(true);
    bench.mainThread.runPosted();
    EXPECT_FALSE(isCalled);
    EXPECT_TRUE(bench.keyStore.calls.empty());
}

TEST(Vault, staysLockedWhateverFails) {
    struct Case {
        const char* name;
        std::function<void(VaultFixture&)> arrange;
        StorageError expected;
        bool keepsKey;
    };
    const auto putKey = [](VaultFixture& bench, std::size_t size) {
        bench.keyStore.key = Bytes(size);
    };
    const KeychainError refused(KeychainError::Status{.code = -128, .message = {}});
    const Case cases[] = {
        {"short key", [&](VaultFixture& b) { putKey(b, 16); }, VaultError::badKey, true},
        {"long key", [&](VaultFixture& b) { putKey(b, 33); }, VaultError::badKey, true},
        {"key lost on reading",
         [&](VaultFixture& b) {
             putKey(b, 32);
             b.keyStore.losesKey = true;
         },
         VaultError::keyMissingButDataExists, true},
        {"key not read",
         [&](VaultFixture& b) {
             putKey(b, 32);
             b.keyStore.failing.emplace(FakeKeyStore::Operation::load, refused);
         },
         refused, true},
        {"no key for saved faces",
         [](VaultFixture& b) { b.fileSystem.put(b.folder.facesFile(), {1}); },
         VaultError::keyMissingButDataExists, false},
        {"no key for a saved password",
         [](VaultFixture& b) { b.fileSystem.put(b.folder.passwordFile(), {1}); },
         VaultError::keyMissingButDataExists, false},
        {"key store unreadable while data is saved",
         [&](VaultFixture& b) {
             putKey(b, 32);
             b.fileSystem.put(b.folder.facesFile(), {1});
             b.keyStore.failing.emplace(FakeKeyStore::Operation::has, refused);
         },
         VaultError::keyMissingButDataExists, true},
        {"key not saved",
         [&](VaultFixture& b) {
             b.keyStore.failing.emplace(FakeKeyStore::Operation::save, refused);
         },
         refused, false},
        {"key reads back differently", [](VaultFixture& b) { b.keyStore.corruptsKey = true; },
         VaultError::badKey, true},
        {"key doesn’t read back", [](VaultFixture& b) { b.keyStore.losesKey = true; },
         VaultError::badKey, true},
        {"owner cancels", [](VaultFixture& b) { b.owner.answer = false; },
         OwnerCheckError(OwnerCheckError::Cancelled{}), false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        VaultFixture bench;
        test.arrange(bench);
        const auto result = bench.unlock();
        ASSERT_TRUE(result && !*result);
        EXPECT_EQ(result->error(), test.expected);
        EXPECT_FALSE(bench.vault->isUnlocked());
        EXPECT_EQ(bench.vault->lastActivityAt(), std::nullopt);
        EXPECT_EQ(bench.keyStore.key.has_value(), test.keepsKey);
    }
}

TEST(Vault, reportsEachChangeOnceWithoutHoldingItsLock) {
    VaultFixture bench;
    std::vector<bool> states;
    bench.onChange = [&] {
        states.push_back(bench.vault->isUnlocked());
        bench.vault->recordActivity();
    };
    bench.vault->lock();
    (void)bench.unlock();
    (void)bench.unlock();
    bench.vault->lock();
    bench.vault->lock();
    EXPECT_EQ(states, (std::vector<bool>{true, false}));
    bench.vault->recordActivity();
    EXPECT_EQ(bench.vault->lastActivityAt(), std::nullopt);
}

TEST(Vault, sealsInItsOwnFormat) {
    VaultFixture bench;
    (void)bench.unlock();
    const Bytes blob = sealed(bench, "x", VaultPurpose::faces);
    ASSERT_EQ(blob.size(), 30U);
    EXPECT_EQ(blob[0], 1);
    const Bytes again = sealed(bench, "x", VaultPurpose::faces);
    EXPECT_FALSE(std::equal(blob.begin() + 1, blob.begin() + 13, again.begin() + 1)) << "nonces";

    const Bytes key = bench.keyStore.key.value();
    const auto plaintext = bench.cipher.open(
        AuthenticatedCipher::Key(key), AuthenticatedCipher::Nonce(blob.data() + 1, 12),
        bytesOf("app.quenby.unlock/faces/1"), std::span(blob).subspan(13));
    ASSERT_TRUE(plaintext);
    EXPECT_EQ(plaintext->values()[0], 'x');
}

TEST(Vault, refusesTamperedBlobs) {
    VaultFixture bench;
    (void)bench.unlock();
    const Bytes blob = sealed(bench, "secret", VaultPurpose::password);
    for (std::size_t bit = 0; bit < blob.size() * 8; ++bit) {
        Bytes flipped = blob;
        flipped[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
        EXPECT_EQ(problemOf(bench.vault->open(flipped, VaultPurpose::password)),
                  bit < 8 ? VaultError::unknownFormat : VaultError::openFailed);
    }
    for (std::size_t size = 0; size < blob.size(); ++size) {
        EXPECT_EQ(problemOf(bench.vault->open(std::span(blob).first(size), VaultPurpose::password)),
                  VaultError::openFailed);
    }
    EXPECT_EQ(problemOf(bench.vault->open(blob, VaultPurpose::faces)), VaultError::openFailed);

    bench.vault->lock();
    bench.keyStore.key = Bytes(32);
    (void)bench.unlock();
    EXPECT_EQ(problemOf(bench.vault->open(blob, VaultPurpose::password)), VaultError::openFailed);
}

TEST(Vault, servesManyThreadsWhileItOpensAndLocks) {
    VaultFixture bench;
    (void)bench.unlock();
    const Bytes blob = sealed(bench, "secret", VaultPurpose::password);
    std::atomic<bool> isOver = false;
    std::vector<std::thread> users;
    for (int i = 0; i < 3; ++i) {
        users.emplace_back([&] {
            while (!isOver) {
                const auto plaintext = bench.vault->open(blob, VaultPurpose::password);
                EXPECT_TRUE(plaintext || plaintext.error() == VaultError::locked);
                const auto made = bench.vault->seal(bytesOf("other"), VaultPurpose::faces);
                EXPECT_TRUE(made || made.error() == VaultError::locked);
                bench.vault->recordActivity();
                (void)bench.vault->lastActivityAt();
            }
        });
    }
    bench.owner.answer.reset();
    int unlocks = 0;
    for (int round = 0; round < 50; ++round) {
        std::thread locker([&] { bench.vault->lock(); });
        bench.vault->unlock("open it", [&](const Result& result) { unlocks += result ? 1 : 0; });
        std::vector<std::thread> replies;
        for (const auto& prompt : std::exchange(bench.owner.prompts, {})) {
            for (int i = 0; i < 2; ++i)
                replies.emplace_back([reply = prompt.reply] { reply(true); });
        }
        for (std::thread& reply : replies)
            reply.join();
        locker.join();
        bench.mainThread.runPosted();
    }
    isOver = true;
    for (std::thread& user : users)
        user.join();
    EXPECT_EQ(unlocks, 50);

    // The reply races with the vault's destruction.
    bench.vault->lock();
    bench.vault->unlock("open it", [](const Result&) {});
    std::thread reply([prompt = bench.owner.prompts.back()] { prompt.reply(true); });
    bench.vault.reset();
    reply.join();
    bench.mainThread.runPosted();
}

}  // namespace
}  // namespace marrowby
