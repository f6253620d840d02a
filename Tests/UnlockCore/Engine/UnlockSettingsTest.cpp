// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeDefaultsStore.h"
#include "UnlockCore/Engine/UnlockSettings.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Texts = std::vector<std::string>;

UnlockSettings everythingChanged() {
    return {.isEnabled = true,
            .triggers = {UnlockTrigger::onSpace, UnlockTrigger::onReturn},
            .showsAnimation = false,
            .strictness = MatchStrictness::relaxed,
            .livenessMode = LivenessMode::strict,
            .scanSeconds = 8,
            .autoLock = AutoLockInterval::never,
            .builtInDisplayCameraID = "built-in",
            .externalDisplayCameraID = "desk",
            .hasFinishedWelcome = true,
            .asksDesktop = true,
            .hasSeenLocker = true,
            .passwordHealth = {.failures = 2, .suspended = true, .needsNotice = true},
            .untypedLocker = "slock"};
}

TEST(UnlockSettings, everyFieldHasItsKeyAndForm) {
    FakeDefaultsStore store;
    everythingChanged().save(store);
    const std::map<std::string, DefaultsValue> expected{
        {"unlock.enabled", true},
        {"unlock.triggers", Texts{"onReturn", "onSpace"}},
        {"unlock.showsAnimation", false},
        {"unlock.strictness", std::string("relaxed")},
        {"unlock.livenessMode", std::string("strict")},
        {"unlock.scanSeconds", std::int64_t{8}},
        {"unlock.autoLock", std::string("never")},
        {"unlock.camera.builtInDisplay", std::string("built-in")},
        {"unlock.camera.externalDisplay", std::string("desk")},
        {"unlock.welcomeFinished", true},
        {"unlock.password.failures", std::int64_t{2}},
        {"unlock.password.suspended", true},
        {"unlock.password.needsNotice", true},
        {"unlock.lockers.seen", true},
        {"unlock.lockers.untyped", std::string("slock")},
        {"unlock.asksDesktop", true},
    };
    EXPECT_EQ(store.values, expected);
    EXPECT_EQ(UnlockSettings::load(store), everythingChanged());

    UnlockSettings().save(store);
    EXPECT_EQ(store.values.count("unlock.camera.builtInDisplay"), 0U);
    EXPECT_EQ(UnlockSettings::load(store), UnlockSettings());
}

TEST(UnlockSettings, aLockerIsAskedAboutOnceAndTheAnswerIsKept) {
    FakeDefaultsStore store;
    UnlockSettings settings;
    EXPECT_TRUE(settings.offerLocker("/opt/a"));
    EXPECT_FALSE(settings.offerLocker("/opt/a"));
    settings.answerOffer(true);
    EXPECT_TRUE(settings.offerLocker("/opt/b"));
    settings.save(store);
    settings = UnlockSettings::load(store);
    EXPECT_EQ(settings.offeredLocker, "/opt/b");
    settings.answerOffer(false);
    settings.answerOffer(true);
    settings.save(store);
    settings = UnlockSettings::load(store);
    EXPECT_EQ(settings.vouchedLockers, std::vector<std::string>{"/opt/a"});
    for (const char* path : {"/opt/a", "/opt/b"})
        EXPECT_FALSE(settings.offerLocker(path)) << path;
    EXPECT_FALSE(settings.offeredLocker);
}

TEST(UnlockSettings, oddValuesAreReadSafely) {
    const DefaultsValue someOtherKind;
    const std::int64_t one = 1;
    using Change = void (*)(UnlockSettings&);
    constexpr Change none = [](UnlockSettings&) {};
    struct Row {
        const char* key;
        DefaultsValue value;
        Change change;
    };
    const Row rows[] = {
        {"unlock.triggers", Texts{"onWake", "onLock"}, none},
        {"unlock.triggers", Texts{"onSpace", "onMoon"},
         [](UnlockSettings& s) { s.triggers = {UnlockTrigger::onSpace}; }},
        {"unlock.triggers", Texts{}, [](UnlockSettings& s) { s.triggers = {}; }},
        {"unlock.enabled", std::string("maybe"), none},
        {"unlock.showsAnimation", someOtherKind,
         [](UnlockSettings& s) { s.showsAnimation = false; }},
        {"unlock.strictness", std::string("Strict"), none},
        {"unlock.livenessMode", std::string("HEAVY"),
         [](UnlockSettings& s) { s.livenessMode = LivenessMode::strict; }},
        {"unlock.scanSeconds", std::int64_t{7}, none},
        {"unlock.camera.builtInDisplay", one, none},
        {"unlock.password.failures", std::int64_t{-3}, none},
    };
    for (const Row& row : rows) {
        FakeDefaultsStore store;
        store.values[row.key] = row.value;
        UnlockSettings expected;
        row.change(expected);
        EXPECT_EQ(UnlockSettings::load(store), expected) << row.key << ", row " << &row - &rows[0];
    }
}

TEST(UnlockSettings, theStoredLivenessModeIsNormalised) {
    const std::pair<DefaultsValue, const char*> rows[] = {{std::string("strict"), "strict"},
                                                          {std::string("Heavy"), "strict"},
                                                          {std::string("stric"), "standard"},
                                                          {true, "standard"}};
    FakeDefaultsStore store;
    EXPECT_FALSE(UnlockSettings::normaliseLivenessMode(store));
    EXPECT_TRUE(store.values.empty());
    for (const auto& [before, after] : rows) {
        const DefaultsValue normal = std::string(after);
        store.values["unlock.livenessMode"] = before;
        EXPECT_EQ(UnlockSettings::normaliseLivenessMode(store), before != normal);
        EXPECT_EQ(store.value("unlock.livenessMode"), normal);
    }
}

}  // namespace
}  // namespace marrowby
