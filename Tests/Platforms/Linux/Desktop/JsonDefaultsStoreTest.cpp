// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/JsonDefaultsStore.h"
#include "Tests/Fakes/FakeFileSystem.h"

#include <limits>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Bytes = FakeFileSystem::Bytes;

const std::filesystem::path path = "/disk/config/settings.json";

Bytes bytes(std::string_view text) {
    return {text.begin(), text.end()};
}

TEST(JsonDefaultsStore, readsBackEveryKindOfValue) {
    const std::pair<const char*, DefaultsValue> values[] = {
        {"bool", true},
        {"integer", std::int64_t{-3}},
        {"largest", std::numeric_limits<std::int64_t>::max()},
        {"double", 2.0},
        {"third", 1.0 / 3.0},
        {"text", std::string("grün \"\n")},
        {"texts", std::vector<std::string>{"a", "b"}},
        {"no texts", std::vector<std::string>()},
    };
    FakeFileSystem fileSystem;
    {
        JsonDefaultsStore store(fileSystem, path);
        EXPECT_EQ(store.value("bool"), std::nullopt);
        for (const auto& [key, value] : values)
            store.set(key, value);
        store.set("gone", true);
        store.remove("gone");
        EXPECT_EQ(store.problem(), std::nullopt);
    }
    fileSystem.losePower(FakeFileSystem::Names::lost);
    JsonDefaultsStore store(fileSystem, path);
    for (const auto& [key, value] : values)
        EXPECT_EQ(store.value(key), value) << key;
    EXPECT_EQ(store.value("gone"), std::nullopt);
}

TEST(JsonDefaultsStore, keepsADamagedFileAside) {
    FakeFileSystem fileSystem;
    for (const int number : {1, 2}) {
        const Bytes damaged = bytes("{\"a\":" + std::to_string(number));
        fileSystem.put(path, damaged);
        JsonDefaultsStore store(fileSystem, path);
        EXPECT_EQ(store.value("a"), std::nullopt);
        const std::string aside = "settings.json.damaged-" + std::to_string(number);
        EXPECT_EQ(store.problem(), "The settings were damaged. They’re kept in " + aside + ".");
        EXPECT_EQ(fileSystem.content(path.parent_path() / aside), damaged);
        store.set("a", true);
        EXPECT_TRUE(store.problem()) << "what was set before is gone";
        EXPECT_EQ(JsonDefaultsStore(fileSystem, path).value("a"), DefaultsValue(true));
    }
    EXPECT_EQ(fileSystem.files().size(), 3U);
}

TEST(JsonDefaultsStore, neverReplacesAnUnreadableFile) {
    for (const char* content : {R"({"a":1})", "damaged"}) {
        FakeFileSystem fileSystem;
        fileSystem.put(path, bytes(content));
        // The damaged file is read but can't be renamed.
        fileSystem.failCall(content == std::string("damaged") ? 1 : 0);
        JsonDefaultsStore store(fileSystem, path);
        EXPECT_TRUE(store.problem());
        store.set("a", std::int64_t{2});
        EXPECT_EQ(store.value("a"), DefaultsValue(std::int64_t{2}));
        EXPECT_EQ(fileSystem.content(path), bytes(content));
    }
}

TEST(JsonDefaultsStore, triesAgainAfterAFailedWrite) {
    FakeFileSystem fileSystem;
    JsonDefaultsStore store(fileSystem, path);
    fileSystem.failFrom(0);
    store.set("a", true);
    EXPECT_EQ(store.problem(),
              "The settings couldn’t be saved: " + FakeFileSystem::error().message + ".");
    EXPECT_EQ(store.value("a"), DefaultsValue(true));
    fileSystem.heal();
    store.set("a", true);
    EXPECT_EQ(store.problem(), std::nullopt);
    EXPECT_EQ(JsonDefaultsStore(fileSystem, path).value("a"), DefaultsValue(true));
}

}  // namespace
}  // namespace marrowby
