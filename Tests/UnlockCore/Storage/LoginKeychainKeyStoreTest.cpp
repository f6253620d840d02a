#include "Tests/Fakes/FakeKeychain.h"
#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/Storage/LoginKeychainKeyStore.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Attribute = KeychainAttribute;
using Operation = FakeKeychain::Operation;

constexpr std::array<std::uint8_t, 3> key{1, 2, 3};
constexpr KeychainStatus notAllowed = -25308;

/// The data are compared by their bytes, everything else by value.
bool isSame(const KeychainQuery& query, KeychainQuery expected,
            std::optional<std::span<const std::uint8_t>> data = std::nullopt) {
    KeychainQuery rest = query;
    const auto value = rest.extract(Attribute::valueData);
    if (value.empty() != !data) return false;
    if (data &&
        !std::ranges::equal(std::get<std::span<const std::uint8_t>>(value.mapped()), *data)) {
        return false;
    }
    return std::ranges::equal(rest, expected, [](const auto& a, const auto& b) {
        if (a.first != b.first || a.second.index() != b.second.index()) return false;
        if (const auto* text = std::get_if<std::string>(&a.second)) {
            return *text == std::get<std::string>(b.second);
        }
        if (const auto* flag = std::get_if<bool>(&a.second))
            return *flag == std::get<bool>(b.second);
        return std::get<KeychainConstant>(a.second) == std::get<KeychainConstant>(b.second);
    });
}

struct Bench {
    FakeKeychain keychain;
    LoginKeychainKeyStore store{keychain, "some.service", "vault-key"};
    KeychainQuery item{{Attribute::itemClass, KeychainConstant::genericPassword},
                       {Attribute::service, "some.service"},
                       {Attribute::account, "vault-key"},
                       {Attribute::useDataProtectionKeychain, false}};

    [[nodiscard]] KeychainQuery itemWith(KeychainQuery more) const {
        more.insert(item.begin(), item.end());
        return more;
    }
};

TEST(LoginKeychainKeyStore, asksExactlyThis) {
    Bench bench;
    EXPECT_FALSE(bench.store.hasKey());
    EXPECT_TRUE(bench.store.saveKey(key));
    EXPECT_TRUE(bench.store.saveKey(key));
    const auto loaded = bench.store.loadKey();
    ASSERT_TRUE(loaded && *loaded);
    EXPECT_TRUE(std::ranges::equal((*loaded)->values(), key));
    EXPECT_TRUE(bench.store.deleteKey());

    const auto calls = bench.keychain.calls();
    ASSERT_EQ(calls.size(), 6U);
    EXPECT_EQ(calls[0].operation, Operation::copyMatching);
    EXPECT_TRUE(isSame(calls[0].query,
                       bench.itemWith({{Attribute::returnAttributes, true},
                                       {Attribute::matchLimit, KeychainConstant::matchLimitOne}})));
    EXPECT_EQ(calls[1].operation, Operation::update);
    EXPECT_TRUE(isSame(calls[1].query, bench.item));
    EXPECT_TRUE(isSame(calls[1].attributes, {}, key));
    EXPECT_EQ(calls[2].operation, Operation::add);
    EXPECT_TRUE(isSame(calls[2].query,
                       bench.itemWith({{Attribute::label, "Marrowby Unlock"},
                                       {Attribute::itemDescription,
                                        "Encrypts Marrowby Unlock’s saved face and password"}}),
                       key));
    EXPECT_EQ(calls[3].operation, Operation::update) << "an item that is there is not added again";
    EXPECT_EQ(calls[4].operation, Operation::copyMatching);
    EXPECT_TRUE(isSame(calls[4].query,
                       bench.itemWith({{Attribute::returnData, true},
                                       {Attribute::matchLimit, KeychainConstant::matchLimitOne}})));
    EXPECT_EQ(calls[5].operation, Operation::remove);
    EXPECT_TRUE(isSame(calls[5].query, bench.item));
}

TEST(LoginKeychainKeyStore, tellsMissingFromFailed) {
    Bench bench;
    const auto missing = bench.store.loadKey();
    EXPECT_TRUE(missing && !*missing);
    EXPECT_TRUE(bench.store.deleteKey());

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

TEST(LoginKeychainKeyStore, namesItsServiceAfterTheBundle) {
    EXPECT_EQ(LoginKeychainKeyStore::vaultService("org.example"), "org.example.vault");
    EXPECT_EQ(LoginKeychainKeyStore::vaultService(std::nullopt), "app.quenby.unlock.vault");
}

}  // namespace
}  // namespace marrowby
