// SPDX-License-Identifier: Apache-2.0

// Tests of system services that neither prompt nor leave anything behind.

#include "Platforms/Posix/PosixFileSystem.h"
#include "Platforms/macOS/AppKitWindowServer.h"
#include "Platforms/macOS/CoreGraphicsInputIdle.h"
#include "Platforms/macOS/CoreGraphicsKeyEvents.h"
#include "Platforms/macOS/CoreGraphicsLoginSession.h"
#include "Platforms/macOS/DispatchWorkQueues.h"
#include "Platforms/macOS/FoundationNotificationCenter.h"
#include "Platforms/macOS/FoundationSystemClock.h"
#include "Platforms/macOS/OpenDirectoryAccounts.h"
#include "Platforms/macOS/Rules/LoginKeychainKeyStore.h"
#include "Platforms/macOS/Rules/PanelConfiguration.h"
#include "Platforms/macOS/RunLoopMainThread.h"
#include "Platforms/macOS/SecurityKeychain.h"
#include "Platforms/macOS/UserDefaultsStore.h"
#include "Unlock/macOS/MacWords.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#import <AppKit/AppKit.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace marrowby {
namespace {

constexpr const char* name = "app.quenby.unlock.tests";

/// False when the condition is still false after 20 s.
bool runUntil(const std::function<bool()>& condition) {
    NSDate* const deadline = [NSDate dateWithTimeIntervalSinceNow:20];
    while (!condition()) {
        if (deadline.timeIntervalSinceNow < 0) return false;
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, false);
    }
    return true;
}

TEST(RunLoopMainThread, runsPostsInOrderAndTimersUntilDestroyed) {
    RunLoopMainThread mainThread;
    const FoundationSystemClock clock;
    std::string order;
    DispatchWorkQueues().serial(name)->async([&] { mainThread.post([&] { order += 'b'; }); });
    mainThread.post([&] { order += 'a'; });
    ASSERT_TRUE(runUntil([&] { return order.size() == 2; }));

    const auto cancelled = [&] {
        return mainThread.at(clock.now(), TimeInterval(0), [&] { order += 'x'; });
    };
    cancelled().reset();
    std::unique_ptr<MainThread::Timer> once =
        mainThread.at(clock.now() - TimeInterval(5), TimeInterval(0), [&] {
            order += 'c';
            once.reset();
        });
    ASSERT_TRUE(runUntil([&] { return once == nullptr; }));
    std::unique_ptr<MainThread::Timer> repeating =
        mainThread.every(TimeInterval(0.01), TimeInterval(0.001), [&] {
            order += 'd';
            if (order.ends_with("dd")) repeating.reset();
        });
    ASSERT_TRUE(runUntil([&] { return repeating == nullptr; }));
    EXPECT_TRUE(order == "abcdd" || order == "bacdd") << order;
}

TEST(FoundationNotificationCenter, callsNoRemovedHandler) {
    RunLoopMainThread mainThread;
    const auto center = FoundationNotificationCenter::local(mainThread);
    int stayed = 0;
    int gone = 0;
    const auto staying = center->observe(name, [&] { ++stayed; });
    const auto going = center->observe(name, [&] { ++gone; });
    center->post(name);
    center->remove(going);
    ASSERT_TRUE(runUntil([&] { return stayed == 1; }));
    center->remove(staying);
    EXPECT_EQ(gone, 0);
}

TEST(UserDefaultsStore, readsBackEveryKindOfValue) {
    UserDefaultsStore store;
    for (const DefaultsValue& value :
         {DefaultsValue(true), DefaultsValue(std::int64_t{7}), DefaultsValue(0.5),
          DefaultsValue("text"), DefaultsValue(std::vector<std::string>{"a", "b"})}) {
        store.set(name, value);
        EXPECT_EQ(store.value(name), value) << "kind " << value.index();
    }
    store.remove(name);
    EXPECT_EQ(store.value(name), std::nullopt);
}

TEST(SecurityKeychain, storesReplacesAndDeletesAKey) {
    SecurityKeychain keychain;
    LoginKeychainKeyStore store(keychain, name, name);
    for (const std::uint8_t byte : {std::uint8_t{1}, std::uint8_t{2}}) {
        const std::array<std::uint8_t, 32> key{byte};
        const auto saved = store.saveKey(key);
        ASSERT_TRUE(saved) << description(saved.error(), macWords);
        const auto loaded = store.loadKey();
        ASSERT_TRUE(loaded && *loaded);
        EXPECT_TRUE(std::ranges::equal((*loaded)->values(), key));
    }
    EXPECT_TRUE(store.deleteKey());
    EXPECT_FALSE(store.hasKey());
    EXPECT_TRUE(keychain.message(keychainItemNotFound));
}

TEST(OpenDirectoryAccounts, knowsThisUserOnly) {
    OpenDirectoryAccounts accounts;
    auto node = accounts.openNode(directoryAuthenticationNode);
    ASSERT_TRUE(node) << node.error().message;
    const auto found = (*node)->record(directoryUserRecords, NSUserName().UTF8String);
    EXPECT_TRUE(found) << found.error().message;
    EXPECT_FALSE((*node)->record(directoryUserRecords, "nobody.of.that.name"));
}

TEST(CoreGraphics, readsInputAndSessionAndMakesEventSources) {
    const CoreGraphicsInputIdle idle;
    EXPECT_GE(idle.secondsSinceLastEvent().count(), 0);
    EXPECT_TRUE(idle.registryIdleNanoseconds());
    EXPECT_GT(idle.systemUptime().count(), 0);
    EXPECT_TRUE(CoreGraphicsKeyEvents().makeSource({}, {}));
    const auto session = CoreGraphicsLoginSession().copyCurrentDictionary();
    if (!session) GTEST_SKIP() << "There is no session of the window server, as over ssh.";
    const auto onConsole = session->find(sessionkey::onConsole);
    ASSERT_NE(onConsole, session->end());
    EXPECT_TRUE(std::holds_alternative<bool>(onConsole->second));
}

TEST(AppKitWindowServer, makesThePanelAndFindsTheSpaces) {
    [NSApplication sharedApplication];
    AppKitWindowServer server;
    const auto screen = server.mainScreen();
    if (!screen) GTEST_SKIP() << "There is no screen.";
    const PanelConfiguration wanted;
    const auto panel =
        server.makePanel({.width = 200, .height = 40}, std::make_shared<PanelContent>());
    ASSERT_TRUE(panel);
    panel->orderFront();
    NSWindow* const window = [NSApp windowWithWindowNumber:panel->windowNumber()];
    ASSERT_TRUE(window);
    EXPECT_EQ(window.level, CGShieldingWindowLevel() + 1);
    EXPECT_EQ(window.collectionBehavior, wanted.collectionBehavior);
    EXPECT_EQ(NSMaxY(window.frame), screen->frame.height);
    EXPECT_TRUE(window.ignoresMouseEvents && !window.canBecomeKeyWindow);
    EXPECT_TRUE(server.hasLockScreenSpaces()) << "The island will not be above the lock screen.";
}

TEST(AppKitWindowServer, movesAHiddenPanelIntoASpaceAndOutOfIt) {
    [NSApplication sharedApplication];
    AppKitWindowServer server;
    const auto space = server.makeLockScreenSpace();
    if (!space) GTEST_SKIP() << "This system has no spaces above the lock screen.";
    const auto panel = server.makePanel({.width = 20, .height = 20}, nullptr);
    ASSERT_TRUE(panel);
    space->add(*panel);
    space->remove(*panel);
    EXPECT_FALSE([NSApp windowWithWindowNumber:panel->windowNumber()].isVisible);
}

TEST(PosixFileSystem, flushesFilesAndFoldersToTheDevice) {
    PosixFileSystem files;
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / (name + std::to_string(::getpid()));
    ASSERT_TRUE(files.makeFolder(folder));
    const auto file = files.createExclusively(folder / "file");
    ASSERT_TRUE(file);
    EXPECT_TRUE(files.flush(*file));
    EXPECT_TRUE(files.flushFolder(folder));
    files.close(*file);
    std::filesystem::remove_all(folder);
}

}  // namespace
}  // namespace marrowby
