// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/Session/DesktopUnlocking.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/Session/MockLogind.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/LockScreenServices/SessionUnlockAsker.h"

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace marrowby {
namespace {

/// The real asker with the real adapter, on a bus with a mock logind and a shell's name.
struct DesktopUnlockingTest : testing::Test {
    QtLoop loop;
    QtMainThread mainThread;
    UnixSystemClock clock;
    TemporaryFolder folder;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    std::optional<MockLogind> mock;
    MockService shell;
    std::optional<LogindWatcher> logind;
    std::optional<DesktopUnlocking> desktop;

    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        qputenv("XDG_SESSION_ID", "c1");
        mock.emplace(*bus);
        mock->obeyUnlock();
    }

    [[nodiscard]] std::filesystem::path policy() const { return folder.path() / "policy.conf"; }
    void write(const char* text) const { std::ofstream(policy()) << text; }
    void startShell(const char* name = "org.gnome.Shell") {
        shell = startMock(*bus, name, {"--session", name, "/shell", name});
        ASSERT_TRUE(shell);
    }
    void watch() {
        logind.emplace(bus->address(), mainThread);
        desktop.emplace(*logind, bus->address(), policy());
        logind->onChange = [this] { desktop->update(); };
        logind->start();
        desktop->start();
    }
    [[nodiscard]] bool becomes(LockOpening opening) {
        return loop.runUntil(
            [&] { return desktop->opening() == opening && desktop->isSessionKnown(); });
    }
    /// The session's hint turns, and long enough passes for it to count as steady.
    void lock() {
        mock->setSession("LockedHint", true);
        ASSERT_TRUE(loop.runUntil([&] {
            const auto since = logind->state().lockedSince;
            return since && unixtime::uptime() - *since > SessionUnlockRule::steadyTime;
        }));
    }
    [[nodiscard]] bool isLocked() const { return logind->state().hint == LockReading::locked; }

    /// One look's worth: the outcome, as text.
    std::string open() {
        SessionUnlockAsker asker(
            {.session = *desktop, .mainThread = mainThread, .clock = clock, .isWanted = [] {
                 return true;
             }});
        std::optional<std::string> text;
        asker.typeStoredPassword(
            [] { return true; },
            [&](const TypingOutcome& outcome) {
                const auto* refused = std::get_if<TypingOutcome::NotAsked>(&outcome);
                text = refused != nullptr
                           ? inEnglish(refused->reason, {{"detail", refused->detail}})
                           : "asked";
            });
        EXPECT_TRUE(loop.runUntil([&] { return text.has_value(); }));
        return text.value_or("nothing");
    }
};

TEST_F(DesktopUnlockingTest, opensALockThatItSawWhateverDesktopOfTheTwo) {
    for (const char* name : {"org.gnome.Shell", "org.kde.KWin"}) {
        shell.reset();
        watch();
        EXPECT_EQ(desktop->opening(), LockOpening::unsupported);
        startShell(name);
        ASSERT_TRUE(becomes(LockOpening::asking));
        lock();
        EXPECT_EQ(open(), "asked");
        EXPECT_TRUE(loop.runUntil([this] { return !isLocked(); }));
        // The same lock twice is no second lock.
        EXPECT_EQ(open(), "The session isn’t locked.");
    }
}

TEST_F(DesktopUnlockingTest, asksNothingWhereSomethingIsWrong) {
    startShell();
    const struct {
        const char* lie;
        std::function<void()> tell;
        std::string answer;
    } cases[] = {
        {"switched away", [this] { mock->setSession("Active", false); },
         "The session isn’t in front."},
        {"going to sleep",
         [this] {
             mock->call(managerPath, "UpdateProperties",
                        {managerInterface, QVariantMap{{"PreparingForSleep", true}}});
         },
         "The computer is going to sleep."},
        {"the shell has gone", [this] { shell.reset(); }, "The desktop doesn’t answer."},
        {"the administrator's no", [this] { write("ask-desktop-to-unlock = no\n"); },
         "The administrator forbids asking the desktop."},
        {"a policy that cannot be read", [this] { std::filesystem::create_directory(policy()); },
         "The administrator forbids asking the desktop."},
        {"logind has gone", [this] { mock.reset(); },
         "The system doesn’t answer about this session."},
    };
    for (const auto& [lie, tell, answer] : cases) {
        SCOPED_TRACE(lie);
        std::filesystem::remove_all(policy());
        if (!shell) startShell();
        mock->setSession("LockedHint", false);
        mock->setSession("Active", true);
        mock->call(managerPath, "UpdateProperties",
                   {managerInterface, QVariantMap{{"PreparingForSleep", false}}});
        watch();
        ASSERT_TRUE(becomes(LockOpening::asking));
        ASSERT_TRUE(loop.runUntil([&] { return logind->state().hint == LockReading::unlocked; }));
        lock();
        tell();
        EXPECT_EQ(open(), answer);
        if (mock) {
            EXPECT_TRUE(loop.runUntil([this] { return isLocked(); })) << "it was asked";
        }
    }
}

TEST_F(DesktopUnlockingTest, trustsNoLockFromBeforeItsTime) {
    startShell();
    mock->setSession("LockedHint", true);
    watch();
    ASSERT_TRUE(becomes(LockOpening::asking));
    ASSERT_TRUE(loop.runUntil([this] { return isLocked(); }));
    EXPECT_EQ(open(), "The screen was locked before Marrowby Unlock saw it.");

    write("ask-desktop-to-unlock = no");
    watch();
    ASSERT_TRUE(becomes(LockOpening::forbidden));
}

TEST_F(DesktopUnlockingTest, countsFromTheLastTurnOfTheHint) {
    watch();
    ASSERT_TRUE(loop.runUntil([this] { return desktop->isSessionKnown(); }));
    lock();
    const auto first = logind->state().lockedSince;
    // Said again, it is no turn.
    mock->setSession("LockedHint", true);
    mock->setSession("LockedHint", false);
    mock->setSession("LockedHint", true);
    ASSERT_TRUE(loop.runUntil([&] {
        const auto since = logind->state().lockedSince;
        return since && since > first;
    }));
}

TEST_F(DesktopUnlockingTest, knowsAForeignShell) {
    startShell();
    ShellWatcher watcher(bus->address(), getuid() + 1);
    watcher.start();
    EXPECT_TRUE(loop.runUntil([&] { return watcher.shell() == ShellWatcher::Shell::foreign; }));
    std::optional<ShellWatcher::Shell> read;
    watcher.read([&](ShellWatcher::Shell found) { read = found; });
    ASSERT_TRUE(loop.runUntil([&] { return read.has_value(); }));
    EXPECT_EQ(*read, ShellWatcher::Shell::foreign);
}

}  // namespace
}  // namespace marrowby
