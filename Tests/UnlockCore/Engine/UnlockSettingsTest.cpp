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
            .passwordHealth = {.failures = 2, .suspended = true, .needsNotice = true}};
}

TEST(UnlockSettings, aFreshStoreGivesTheDefaults) {
    const auto settings = UnlockSettings::load(FakeDefaultsStore());
    EXPECT_EQ(settings, UnlockSettings());
    EXPECT_FALSE(settings.isEnabled);
    EXPECT_TRUE(settings.showsAnimation);
    EXPECT_EQ(settings.scanSeconds, 5);
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
    };
    EXPECT_EQ(store.values, expected);
    EXPECT_EQ(UnlockSettings::load(store), everythingChanged());

    UnlockSettings().save(store);
    EXPECT_EQ(store.values.count("unlock.camera.builtInDisplay"), 0U);
    EXPECT_EQ(UnlockSettings::load(store), UnlockSettings());
}

TEST(UnlockSettings, oddValuesAreReadSafely) {
    const DefaultsValue someOtherKind;
    const std::int64_t one = 1;
    UnlockSettings none;
    none.triggers = {};
    UnlockSettings onSpace;
    onSpace.triggers = {UnlockTrigger::onSpace};
    UnlockSettings noAnimation;
    noAnimation.showsAnimation = false;
    UnlockSettings strict;
    strict.livenessMode = LivenessMode::strict;
    UnlockSettings tenSeconds;
    tenSeconds.scanSeconds = 10;
    const UnlockSettings plain;
    struct Row {
        const char* key;
        DefaultsValue value;
        UnlockSettings expected;
    };
    const Row rows[] = {
        {"unlock.triggers", Texts{"onWake", "onLock"}, plain},
        {"unlock.triggers", Texts{"onSpace", "onMoon"}, onSpace},
        {"unlock.triggers", Texts{}, none},
        {"unlock.triggers", std::string("onSpace"), plain},
        {"unlock.enabled", someOtherKind, plain},
        {"unlock.enabled", std::string("maybe"), plain},
        {"unlock.showsAnimation", someOtherKind, noAnimation},
        {"unlock.strictness", std::string("Strict"), plain},
        {"unlock.strictness", one, plain},
        {"unlock.livenessMode", std::string("HEAVY"), strict},
        {"unlock.livenessMode", one, plain},
        {"unlock.scanSeconds", std::int64_t{7}, plain},
        {"unlock.scanSeconds", std::int64_t{-5}, plain},
        {"unlock.scanSeconds", std::int64_t{10}, tenSeconds},
        {"unlock.autoLock", std::string("year"), plain},
        {"unlock.camera.builtInDisplay", one, plain},
        {"unlock.password.failures", std::int64_t{-3}, plain},
    };
    for (const Row& row : rows) {
        FakeDefaultsStore store;
        store.values[row.key] = row.value;
        EXPECT_EQ(UnlockSettings::load(store), row.expected)
            << row.key << ", row " << &row - &rows[0];
    }
}

TEST(UnlockSettings, theStoredLivenessModeIsNormalised) {
    struct Row {
        std::optional<DefaultsValue> before;
        std::optional<DefaultsValue> after;
        bool rewrote;
    };
    const Row rows[] = {
        {std::nullopt, std::nullopt, false},
        {std::string("standard"), std::string("standard"), false},
        {std::string("strict"), std::string("strict"), false},
        {std::string("Heavy"), std::string("strict"), true},
        {std::string("STRICT"), std::string("strict"), true},
        {std::string(""), std::string("standard"), true},
        {true, std::string("standard"), true},
    };
    for (const Row& row : rows) {
        FakeDefaultsStore store;
        if (row.before) store.values["unlock.livenessMode"] = *row.before;
        EXPECT_EQ(UnlockSettings::normaliseLivenessMode(store), row.rewrote);
        EXPECT_EQ(store.value("unlock.livenessMode"), row.after);
    }
}

TEST(AutoLockInterval, lengths) {
    EXPECT_EQ(length(AutoLockInterval::week), TimeInterval(604'800));
    EXPECT_EQ(length(AutoLockInterval::twoWeeks), TimeInterval(1'209'600));
    EXPECT_EQ(length(AutoLockInterval::month), TimeInterval(2'592'000));
    EXPECT_EQ(length(AutoLockInterval::never), std::nullopt);
    for (const AutoLockInterval interval : allAutoLockIntervals) {
        EXPECT_EQ(autoLockInterval(rawValue(interval)), interval);
    }
}

}  // namespace
}  // namespace marrowby
