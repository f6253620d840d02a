// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Secrets/SecretServiceKeyStore.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Unlock/Linux/LinuxWords.h"

#include <QDBusArgument>
#include <QVariantMap>
#include <algorithm>
#include <array>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr const char* password = "the keyring's";
const std::string noBus = "Keyring: There’s no session bus, so no keyring can be reached.";
const std::string noService =
    "Keyring: No Secret Service is running. Install the package gnome-keyring, then log in again.";
const std::string noKeyring =
    "Keyring: There’s no keyring yet. Log in again with your password, or make one in Passwords "
    "and Keys (package seahorse).";
const std::string locked = "Keyring: Your keyring is locked. Unlock it, then try again.";

/// Contains bytes that are invalid in text.
Bytes key(std::uint8_t seed) {
    Bytes bytes(32);
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<std::uint8_t>(seed + i * 37);
    bytes[5] = 0;
    bytes[6] = 0xff;
    return bytes;
}

/// A store whose results are text.
struct KeyStore {
    SecretServiceKeyStore store;

    explicit KeyStore(std::string address) : store(std::move(address)) {}

    std::string load() {
        const auto loaded = store.loadKey();
        if (!loaded) return description(loaded.error(), linuxWords);
        if (!*loaded) return "nothing";
        for (const std::uint8_t seed : {std::uint8_t{1}, std::uint8_t{2}}) {
            if (std::ranges::equal((*loaded)->values(), key(seed)))
                return "key " + std::to_string(seed);
        }
        return "something else";
    }
    std::string save(std::uint8_t seed) {
        const auto saved = store.saveKey(key(seed));
        return saved ? "saved" : description(saved.error(), linuxWords);
    }
    std::string erase() {
        const auto erased = store.deleteKey();
        return erased ? "erased" : description(erased.error(), linuxWords);
    }
};

struct SecretServiceKeyStoreTest : testing::Test {
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    TemporaryFolder home;

    std::unique_ptr<PrivateKeyring> daemon(const std::string& unlockedWith) {
        return startKeyring(*bus, home.path(), unlockedWith);
    }
    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        // Checked once for all tests.
        static const bool hasDaemon = daemon("") != nullptr;
        if (!hasDaemon) GTEST_SKIP() << noKeyringDaemon;
    }
};

TEST_F(SecretServiceKeyStoreTest, keepsTheKeyAcrossSessions) {
    KeyStore keys(bus->address());
    auto first = daemon(password);
    ASSERT_TRUE(first);
    EXPECT_FALSE(keys.store.hasKey());
    EXPECT_EQ(keys.load(), "nothing");
    EXPECT_EQ(keys.erase(), "erased") << "erasing a missing key";
    EXPECT_EQ(keys.save(1), "saved");
    EXPECT_TRUE(keys.store.hasKey());
    EXPECT_EQ(keys.load(), "key 1");
    EXPECT_EQ(keys.save(2), "saved");
    EXPECT_EQ(keys.load(), "key 2");

    SecretServiceKeyStore other(bus->address(), {.service = "another service"});
    EXPECT_FALSE(other.hasKey());

    first.reset();
    const auto second = daemon(password);
    ASSERT_TRUE(second);
    EXPECT_EQ(keys.load(), "key 2");
    std::vector<std::thread> threads;
    std::array<std::string, 4> loaded;
    for (std::string& text : loaded)
        threads.emplace_back([&] { text = keys.load(); });
    for (std::thread& thread : threads)
        thread.join();
    for (const std::string& text : loaded)
        EXPECT_EQ(text, "key 2");
    EXPECT_EQ(keys.erase(), "erased");
    EXPECT_EQ(keys.load(), "nothing");
    EXPECT_FALSE(keys.store.hasKey());
}

TEST_F(SecretServiceKeyStoreTest, distinguishesMissingLockedAndNoKeyring) {
    // Without a keyring the key counts as present.
    for (const char* address : {"", "unix:path=/nowhere/at/all", "nonsense"}) {
        KeyStore nowhere(address);
        EXPECT_TRUE(nowhere.store.hasKey());
        EXPECT_EQ(nowhere.load(), noBus);
        EXPECT_EQ(nowhere.save(1), noBus);
        EXPECT_EQ(nowhere.erase(), noBus);
    }
    KeyStore keys(bus->address());
    EXPECT_TRUE(keys.store.hasKey());
    EXPECT_EQ(keys.load(), noService);
    EXPECT_EQ(keys.save(1), noService);
    EXPECT_EQ(keys.erase(), noService);

    auto fresh = daemon("");
    ASSERT_TRUE(fresh);
    EXPECT_FALSE(keys.store.hasKey());
    EXPECT_EQ(keys.load(), "nothing");
    EXPECT_EQ(keys.save(1), noKeyring);
    EXPECT_EQ(keys.erase(), "erased");
    fresh.reset();

    auto unlocked = daemon(password);
    ASSERT_TRUE(unlocked);
    EXPECT_EQ(keys.save(1), "saved");
    const auto saysLocked = [&] {
        EXPECT_TRUE(keys.store.hasKey());
        EXPECT_EQ(keys.load(), locked);
        EXPECT_EQ(keys.save(2), locked);
        EXPECT_EQ(keys.erase(), locked);
    };
    unlocked->lock();
    saysLocked();
    unlocked.reset();
    for (const char* wrong : {"", "not the password"}) {
        const auto daemonOfLocked = daemon(wrong);
        ASSERT_TRUE(daemonOfLocked);
        saysLocked();
    }
    const auto again = daemon(password);
    ASSERT_TRUE(again);
    EXPECT_EQ(keys.load(), "key 1");
}

TEST_F(SecretServiceKeyStoreTest, reconnectsToARestartedBus) {
    KeyStore keys(bus->address());
    auto keyring = daemon(password);
    ASSERT_TRUE(keyring);
    EXPECT_EQ(keys.save(1), "saved");
    bus->kill();
    EXPECT_EQ(keys.load(), noBus);
    keyring.reset();
    ASSERT_TRUE(bus->startDaemon());
    EXPECT_EQ(keys.load(), noService);
    keyring = daemon(password);
    ASSERT_TRUE(keyring);
    EXPECT_EQ(keys.load(), "key 1");
}

/// Another implementation: its errors are passed on and its prompts dismissed.
TEST_F(SecretServiceKeyStoreTest, neverPromptsAndPassesOnErrors) {
    const char* name = "org.freedesktop.secrets";
    const char* path = "/org/freedesktop/secrets";
    const char* interface = "org.freedesktop.Secret.Service";
    const auto mock = startMock(*bus, name, {"--session", name, path, interface});
    ASSERT_TRUE(mock);
    const auto answer = [&](const char* method, const char* in, const char* out, const char* code) {
        bus->call(name, path, "org.freedesktop.DBus.Mock", "AddMethod",
                  {interface, method, in, out, code});
    };
    answer("ReadAlias", "s", "o", "ret = '/'");
    answer("SearchItems", "a{ss}", "aoao", "ret = [['/item'], []]");
    bus->call(name, path, "org.freedesktop.DBus.Mock", "AddObject",
              {"/item", "org.freedesktop.Secret.Item", QVariantMap(), QVariantList()});
    bus->call(name, path, "org.freedesktop.DBus.Mock", "AddObject",
              {"/prompt", "org.freedesktop.Secret.Prompt", QVariantMap(), QVariantList()});
    const auto answerAt = [&](const char* object, const char* ofInterface, const char* method,
                              const char* out, const char* code) {
        bus->call(name, object, "org.freedesktop.DBus.Mock", "AddMethod",
                  {ofInterface, method, "", out, code});
    };
    answerAt("/item", "org.freedesktop.Secret.Item", "Delete", "o", "ret = '/prompt'");
    answerAt("/prompt", "org.freedesktop.Secret.Prompt", "Dismiss", "", "");

    KeyStore keys(bus->address());
    EXPECT_EQ(keys.erase(),
              "Keyring: Your keyring wants to ask you first. Unlock it, then try again.");
    const auto dismissals =
        bus->call(name, "/prompt", "org.freedesktop.DBus.Mock", "GetMethodCalls", {"Dismiss"})
            .value<QDBusArgument>();
    dismissals.beginArray();
    EXPECT_FALSE(dismissals.atEnd());
    dismissals.endArray();

    answer("SearchItems", "a{ss}", "aoao",
           "raise dbus.exceptions.DBusException('The disk is on fire.', name='org.example.Fire')");
    EXPECT_EQ(keys.load(), "Keyring: The disk is on fire.");
}

}  // namespace
}  // namespace marrowby
