// SPDX-License-Identifier: Apache-2.0

// The adapters of the frameworks faked here, as the application uses them. Every test ends with all
// framework objects released.

#include "Platforms/macOS/CoreGraphicsInputIdle.h"
#include "Platforms/macOS/CoreGraphicsKeyEvents.h"
#include "Platforms/macOS/CoreGraphicsLoginSession.h"
#include "Platforms/macOS/IOKitKeyboardDevices.h"
#include "Platforms/macOS/LocalOwnerAuthentication.h"
#include "Platforms/macOS/OpenDirectoryAccounts.h"
#include "Platforms/macOS/Rules/DeviceOwnerCheck.h"
#include "Platforms/macOS/Rules/HidSpaceKeys.h"
#include "Platforms/macOS/Rules/LoginKeychainKeyStore.h"
#include "Platforms/macOS/Rules/OpenDirectoryPasswordVerifier.h"
#include "Platforms/macOS/SecurityKeychain.h"
#include "Tests/Fakes/VaultFixture.h"
#include "Tests/MacOnLinux/CoreGraphics.h"
#include "Tests/MacOnLinux/Counted.h"
#include "Tests/MacOnLinux/HidManager.h"
#include "Tests/MacOnLinux/IORegistry.h"
#include "Tests/MacOnLinux/LocalAuthentication.h"
#include "Tests/MacOnLinux/OpenDirectory.h"
#include "Tests/MacOnLinux/Security.h"
#include "UnlockCore/LockWatching/SpaceKeyMonitor.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <algorithm>
#include <array>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

class MacServices : public testing::Test {
  protected:
    ~MacServices() override {
        EXPECT_EQ(held(), 0);
        @autoreleasepool {
            fakeWindowSession() = {};
            fakeKeyboards() = {};
            fakeRegistry() = {};
            fakeLoginKeychain() = {};
            fakeOwnerPrompt() = {};
            fakeAccounts() = {};
        }
    }

    /// Framework objects that this test has not released.
    [[nodiscard]] int held() const { return countedAlive() - before_; }

  private:
    const int before_ = countedAlive();
};

// ---- Keys ----

class MacKeys : public MacServices {
  protected:
    [[nodiscard]] static std::expected<void, KeystrokeError> type(std::string_view password) {
        @autoreleasepool {
            CoreGraphicsKeyEvents keys;
            return keystrokeinjector::typePassword(keys, bytesOf(password), [] { return true; })
                .outcome();
        }
    }
};

TEST_F(MacKeys, clearTypeAndReturnWithoutHeldModifiers) {
    fakeWindowSession().heldFlags = 0x20000;
    EXPECT_TRUE(type("nineteen characters😀, and more"));
    EXPECT_THAT(fakeWindowSession().posted,
                ElementsAre("down 55 flags 1048576", "down 124 flags 1048576",
                            "up 124 flags 1048576", "up 55", "down 55 flags 1048576",
                            "down 51 flags 1048576", "up 51 flags 1048576", "up 55",
                            "down 0 nineteen characters", "up 0 nineteen characters",
                            "down 0 😀, and more", "up 0 😀, and more", "down 36", "up 36"));
}

TEST_F(MacKeys, postNeitherHalfOfAChunkWhenOneFails) {
    for (const std::size_t events : {8U, 9U}) {
        fakeWindowSession() = {.eventsLeft = events};
        const auto outcome = type("secret");
        ASSERT_FALSE(outcome);
        EXPECT_EQ(outcome.error(), KeystrokeError::eventFailed);
        EXPECT_EQ(fakeWindowSession().posted.size(), 8U) << "the keys that clear the field";
    }
}

TEST_F(MacKeys, typeOnlyWithPermissionAndIntoTheLoginWindow) {
    const std::pair<FakeWindowSession, std::optional<KeystrokeError>> cases[] = {
        {{.frontApplication = std::nullopt}, std::nullopt},
        {{.isTrusted = false}, KeystrokeError::noAccessibility},
        {{.mayPost = false}, KeystrokeError::noAccessibility},
        {{.hasSource = false}, KeystrokeError::eventFailed},
        {{.isInputSecure = false}, KeystrokeError::notLocked},
        {{.frontApplication = @"com.apple.Safari"}, KeystrokeError::notLocked},
        {{.frontApplication = nil}, KeystrokeError::notLocked},
    };
    for (const auto& [session, error] : cases) {
        fakeWindowSession() = session;
        const auto outcome = type("secret");
        EXPECT_EQ(outcome ? std::nullopt : std::optional(outcome.error()), error);
        EXPECT_EQ(fakeWindowSession().posted.empty(), error.has_value());
    }
}

// ---- Session and input ----

TEST_F(MacServices, readTheSessionDictionaryByValueType) {
    const CoreGraphicsLoginSession session;
    fakeWindowSession().facts = @{
        @"CGSSessionScreenIsLocked" : @YES,
        @"number" : @1,
        @"part" : @0.5,
        @"text" : @"ännä",
        @"other" : @[],
        @7 : @YES
    };
    @autoreleasepool {
        const SessionDictionary expected{{sessionkey::screenIsLocked, true},
                                         {"number", std::int64_t{1}},
                                         {"part", 0.5},
                                         {"text", "ännä"}};
        EXPECT_EQ(session.copyCurrentDictionary(), expected);
        fakeWindowSession().facts = nil;
        EXPECT_EQ(session.copyCurrentDictionary(), std::nullopt);
    }
}

TEST_F(MacServices, readTheIdleTimeAndReleaseTheRegistryEntry) {
    const CoreGraphicsInputIdle idle;
    @autoreleasepool {
        EXPECT_EQ(idle.registryIdleNanoseconds(), 1'500'000'000U);
        fakeRegistry().hasEntry = false;
        EXPECT_EQ(idle.registryIdleNanoseconds(), std::nullopt);
    }
    EXPECT_EQ(fakeRegistry().entriesHeld, 0);
}

// ---- Space ----

class MacSpaceKey : public MacServices {
  protected:
    static constexpr std::uint32_t space = 44;

    ~MacSpaceKey() override { EXPECT_EQ(fakeKeyboards().leftInUse, 0); }

    IOKitKeyboardDevices devices;
    CoreGraphicsInputIdle counters;
    HidInputIdle idle{counters};
    OwnKeystrokes own{idle};
    HidSpaceKeys keys{devices};
    std::unique_ptr<SpaceKeyMonitor> monitor = std::make_unique<SpaceKeyMonitor>(keys, own);
    int presses = 0;
};

TEST_F(MacSpaceKey, isHeardOnEveryUnseizedKeyboard) {
    @autoreleasepool {
        fakeKeyboards().areSeized = {true, false};
        monitor->onSpace = [this] { ++presses; };
        monitor->start();
        EXPECT_TRUE(monitor->isListening());
        EXPECT_THAT(fakeKeyboards().searches, ElementsAre("page 1 usage 6"));
        FakeKeyboards::send(0, space, true);
        EXPECT_EQ(presses, 0);
        FakeKeyboards::send(1, space, true);
        FakeKeyboards::send(1, space, false);
        FakeKeyboards::send(1, space + 1, true);
        // Longer than a number.
        FakeKeyboards::send(1, space, true, 16);
        EXPECT_EQ(presses, 1);
        monitor->stop();
        FakeKeyboards::send(1, space, true);
        EXPECT_EQ(presses, 1);
    }
}

TEST_F(MacSpaceKey, mayStopListeningInItsCallback) {
    @autoreleasepool {
        std::unique_ptr<KeyboardDevices::Listening> listening;
        listening = devices.open({}, [&, log = std::vector<int>()](const auto& value) mutable {
            listening.reset();
            log.push_back(static_cast<int>(value.usage));
            presses += log.front() == space ? 1 : 0;
            EXPECT_EQ(held(), 1) << "the manager, during its callback";
        });
        FakeKeyboards::send(0, space, true);
        FakeKeyboards::send(0, space, true);
        EXPECT_EQ(presses, 1);
    }
}

TEST_F(MacSpaceKey, needsAccessAndRequestsIt) {
    @autoreleasepool {
        fakeKeyboards().isGranted = false;
        EXPECT_FALSE(monitor->hasAccess());
        EXPECT_EQ(fakeKeyboards().requests, 0) << "checking does not prompt";
        devices.requestListenAccess();
        EXPECT_EQ(fakeKeyboards().requests, 1);
        monitor->start();
        EXPECT_FALSE(monitor->isListening());

        fakeKeyboards().isGranted = true;
        fakeKeyboards().openFailure = -1;
        monitor->start();
        EXPECT_FALSE(monitor->isListening());
        fakeKeyboards().openFailure = 0;
        monitor->start();
        EXPECT_TRUE(monitor->isListening() && monitor->hasAccess());
        monitor.reset();
    }
}

// ---- Keychain ----

class MacKeychain : public MacServices {
  protected:
    SecurityKeychain keychain;
    LoginKeychainKeyStore store{keychain, "service", "ännä"};
    std::array<std::uint8_t, 32> key{7};
};

TEST_F(MacKeychain, keepsOneItemAndReleasesReadBytes) {
    @autoreleasepool {
        EXPECT_FALSE(store.hasKey());
        EXPECT_TRUE(store.saveKey(key));
        key[1] = 8;
        EXPECT_TRUE(store.saveKey(key));
        EXPECT_TRUE(store.hasKey());
        const auto loaded = store.loadKey();
        EXPECT_EQ(held(), 0) << "released at once, not by the caller's pool";
        ASSERT_TRUE(loaded && *loaded);
        EXPECT_TRUE(std::ranges::equal((*loaded)->values(), key));
        EXPECT_THAT(fakeLoginKeychain().calls,
                    ElementsAre("match", "update", "add", "update", "match", "match"));
        NSDictionary* const item = fakeLoginKeychain().items[@"service ännä"];
        EXPECT_TRUE([item[@"kSecAttrLabel"] isEqual:@"Marrowby Unlock"]);
        EXPECT_TRUE(store.deleteKey() && store.deleteKey());
        EXPECT_EQ(fakeLoginKeychain().items.count, 0U);
    }
}

TEST_F(MacKeychain, passesOnTheStatusOfARefusal) {
    @autoreleasepool {
        EXPECT_TRUE(store.saveKey(key));
        fakeLoginKeychain().foreignResult = @[ @"no bytes" ];
        EXPECT_EQ(problemOf(store.loadKey()), StorageError(KeychainError::UnexpectedData{}));
        const std::pair<KeychainStatus, std::optional<std::string>> refusals[] = {
            {-128, "Keychain error -128"}, {-50, std::nullopt}};
        for (const auto& [status, text] : refusals) {
            fakeLoginKeychain().refusal = status;
            const StorageError refused = KeychainError(KeychainError::Status{status, text});
            EXPECT_EQ(problemOf(store.loadKey()), refused);
            EXPECT_EQ(problemOf(store.saveKey(key)), refused);
            EXPECT_EQ(problemOf(store.deleteKey()), refused);
            EXPECT_FALSE(store.hasKey());
        }
    }
}

// ---- The owner, and the account ----

TEST_F(MacServices, distinguishACancelFromOtherErrors) {
    struct Case {
        bool success;
        NSString* domain;
        NSInteger code;
        bool isCancel;
    };
    const Case cases[] = {
        {true, nil, 0, false},
        {false, nil, 0, true},
        {false, @"com.apple.LocalAuthentication", -2, true},
        {false, @"com.apple.LocalAuthentication", -4, true},
        {false, @"com.apple.LocalAuthentication", -9, true},
        {false, @"com.apple.LocalAuthentication", -8, false},
        {false, @"NSOSStatusErrorDomain", -2, false},
        {false, @"NSOSStatusErrorDomain", -4, false},
        {false, @"NSOSStatusErrorDomain", -9, false},
    };
    for (const Case& one : cases) {
        @autoreleasepool {
            std::optional<OwnerCheck::Result> outcome;
            {
                LocalOwnerAuthentication authentication;
                DeviceOwnerCheck(authentication).confirmOwner("unlock", [&](const auto& answer) {
                    outcome = answer;
                });
            }
            EXPECT_FALSE(outcome) << "the open prompt retains its context";
            EXPECT_THAT(fakeOwnerPrompt().asked, ElementsAre("2 unlock"));
            fakeOwnerPrompt().asked.clear();
            FakeOwnerPrompt::answer(one.success, one.domain ? [NSError errorWithDomain:one.domain
                                                                                  code:one.code
                                                                              userInfo:nil]
                                                            : nil);
            ASSERT_TRUE(outcome);
            EXPECT_EQ(outcome->has_value(), one.success);
            const OwnerCheck::Result cancelled =
                std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{}));
            EXPECT_EQ(*outcome == cancelled, one.isCancel) << one.code;
        }
        EXPECT_EQ(held(), 0);
    }
}

TEST_F(MacServices, passOnTheErrorOfCanEvaluate) {
    LocalOwnerAuthentication authentication;
    std::vector<OwnerCheck::Result> outcomes;
    @autoreleasepool {
        const auto ask = [&](const std::string& reason) {
            DeviceOwnerCheck(authentication).confirmOwner(reason, [&](const auto& outcome) {
                outcomes.push_back(outcome);
            });
        };
        ask("");
        fakeOwnerPrompt().canAsk = false;
        ask("unlock");
        fakeOwnerPrompt().whyNot =
            [NSError errorWithDomain:@"com.apple.LocalAuthentication"
                                code:-5
                            userInfo:@{NSLocalizedDescriptionKey : @"No password is set."}];
        ask("unlock");
    }
    ASSERT_EQ(outcomes.size(), 3U);
    const auto unavailable = [](std::string why) {
        return OwnerCheck::Result(
            std::unexpected(OwnerCheckError(OwnerCheckError::Unavailable{std::move(why)})));
    };
    EXPECT_EQ(outcomes[0],
              OwnerCheck::Result(std::unexpected(OwnerCheckFailure{"There is no reason."})));
    EXPECT_EQ(outcomes[1], unavailable(""));
    EXPECT_EQ(outcomes[2], unavailable("No password is set."));
}

TEST_F(MacServices, checkTheAccountsPassword) {
    OpenDirectoryAccounts accounts;
    const auto check = [&](const std::string& name, std::string_view password) {
        return OpenDirectoryPasswordVerifier(accounts, name).check(bytesOf(password));
    };
    const auto unavailable = [](const PasswordCheckResult& result, const std::string& why) {
        return result == PasswordCheckResult(PasswordCheckResult::Unavailable{why});
    };
    @autoreleasepool {
        fakeAccounts().passwords = @{@"anna" : @"rïght"};
        EXPECT_TRUE(std::holds_alternative<PasswordCheckResult::Correct>(check("anna", "rïght")));
        EXPECT_THAT(fakeAccounts().calls,
                    ElementsAre("node 8705", "record dsRecTypeStandard:Users", "verify"));
        EXPECT_TRUE(std::holds_alternative<PasswordCheckResult::Incorrect>(check("anna", "right")));
        EXPECT_TRUE(unavailable(check("berta", "rïght"), "No such record."));
        fakeAccounts().exception = [NSException exceptionWithName:@"NSGenericException"
                                                           reason:@"No directory."
                                                         userInfo:nil];
        EXPECT_TRUE(unavailable(check("anna", "rïght"), "No directory."));
    }
}

}  // namespace
}  // namespace marrowby
