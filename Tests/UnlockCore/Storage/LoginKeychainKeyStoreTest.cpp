#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/Storage/LoginKeychainKeyStore.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Operation = FakeKeychain::Operation;

const std::span<const std::uint8_t> key = bytesOf("key");

struct Bench {
    FakeKeychain keychain;
    LoginKeychainKeyStore store{keychain, "some.service", "vault-key"};
};

TEST(LoginKeychainKeyStore, keepsOneKeyThatIsReplacedInItsPlace) {
    Bench bench;
    EXPECT_FALSE(bench.store.hasKey());
    EXPECT_TRUE(bench.store.saveKey(bytesOf("older")));
    EXPECT_TRUE(bench.store.saveKey(key));
    EXPECT_TRUE(bench.store.hasKey());
    const auto loaded = bench.store.loadKey();
    ASSERT_TRUE(loaded && *loaded);
    EXPECT_TRUE(std::ranges::equal((*loaded)->values(), key));
    EXPECT_EQ(bench.keychain.items().size(), 1U);
    EXPECT_TRUE(bench.store.deleteKey());
    EXPECT_TRUE(bench.keychain.items().empty());
    EXPECT_EQ(
        bench.keychain.calls(),
        (std::vector{Operation::copyMatching, Operation::update, Operation::add, Operation::update,
                     Operation::copyMatching, Operation::copyMatching, Operation::remove}));
}

TEST(LoginKeychainKeyStore, tellsMissingFromFailed) {
    Bench bench;
    const auto missing = bench.store.loadKey();
    EXPECT_TRUE(missing && !*missing);
    EXPECT_TRUE(bench.store.deleteKey());

    constexpr KeychainStatus notAllowed = -25308;
    const StorageError failed = KeychainError(
        KeychainError::Status{.code = notAllowed, .message = "User interaction is not allowed."});
    bench.keychain.failing = {{Operation::copyMatching, notAllowed},
                              {Operation::add, notAllowed},
                              {Operation::remove, notAllowed}};
    EXPECT_FALSE(bench.store.hasKey());
    EXPECT_EQ(problemOf(bench.store.loadKey()), failed);
    EXPECT_EQ(problemOf(bench.store.saveKey(key)), failed);
    EXPECT_EQ(problemOf(bench.store.deleteKey()), failed);
    bench.keychain.failing = {{Operation::update, notAllowed}};
    EXPECT_EQ(problemOf(bench.store.saveKey(key)), failed);
    EXPECT_TRUE(bench.keychain.items().empty()) << "a failed update is not followed by an add";
}

}  // namespace
}  // namespace marrowby
