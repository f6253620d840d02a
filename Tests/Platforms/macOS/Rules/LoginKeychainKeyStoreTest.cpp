// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LoginKeychainKeyStore.h"
#include "Tests/Fakes/BytesOf.h"
#include "Tests/Platforms/macOS/Rules/FakeKeychain.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Operation = FakeKeychain::Operation;

template <typename Value>
std::optional<KeychainError> problemOf(const std::expected<Value, KeychainError>& result) {
    return result ? std::nullopt : std::optional(result.error());
}

const std::span<const std::uint8_t> key = bytesOf("key");

struct Bench {
    FakeKeychain keychain;
    LoginKeychainKeyStore store{keychain, "some.service", "vault-key"};
};

TEST(LoginKeychainKeyStore, keepsOneKeyAndUpdatesItInPlace) {
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

TEST(LoginKeychainKeyStore, distinguishesMissingFromFailed) {
    Bench bench;
    const auto missing = bench.store.loadKey();
    EXPECT_TRUE(missing && !*missing);
    EXPECT_TRUE(bench.store.deleteKey());

    constexpr KeychainStatus notAllowed = -25308;
    const KeychainError failed(
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

    bench.keychain.failing.clear();
    EXPECT_TRUE(bench.store.saveKey(key));
    bench.keychain.withholdsData = true;
    EXPECT_EQ(problemOf(bench.store.loadKey()), KeychainError(KeychainError::UnexpectedData{}));
}

}  // namespace
}  // namespace marrowby
