// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11LockState.h"
#include "Platforms/Linux/X11/X11LockWatcher.h"
#include "Platforms/Linux/X11/X11SpaceKeys.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

constexpr LockState unlockedHere{.isScreenLocked = false, .isOnConsole = true};
constexpr LockState lockedHere{.isScreenLocked = true, .isOnConsole = true};

/// Cases that no real locker produces on demand.
struct X11SessionTest : testing::Test {
    QtLoop loop;
    std::unique_ptr<PrivateDisplay> display = PrivateDisplay::start();
    std::unique_ptr<X11LockState> lock;
    std::unique_ptr<X11LockWatcher> watcher;
    std::unique_ptr<X11SpaceKeys> keys;
    std::size_t changes = 0;
    int spaces = 0;

    void SetUp() override {
        if (!display) GTEST_SKIP() << noPrivateDisplay;
        lock = X11LockState::create(display->name()).value();
        watcher = X11LockWatcher::create(
                      display->name(), [this] { ++changes; }, [](const auto&) {})
                      .value();
        keys = X11SpaceKeys::create(display->name()).value();
    }

    [[nodiscard]] std::unique_ptr<SpaceKeys::Listening> listen() {
        return keys->listen([this](const auto&) { ++spaces; });
    }
    [[nodiscard]] bool awaitChanges(std::size_t count) {
        return loop.runUntil([&] { return changes >= count; });
    }
};

TEST_F(X11SessionTest, reportsOnlyLockersThatCoverOrLeaveTheScreen) {
    const LockerWindow managed(*display, "i3lock", LockerWindow::Management::byWindowManager);
    managed.map();
    const LockerWindow saver(*display, "xscreensaver");
    saver.map();
    display->setRootProperty("_SCREENSAVER_STATUS", display->connection().atom("BLANK"));
    EXPECT_EQ(lock->state(), unlockedHere);
    {
        const LockerWindow locker(*display, "i3lock");
        locker.map();
        ASSERT_TRUE(awaitChanges(1));
        EXPECT_EQ(lock->state(), lockedHere);
        locker.unmap();
        ASSERT_TRUE(awaitChanges(2));
        EXPECT_EQ(lock->state(), unlockedHere);

        locker.resize(320, 200);
        locker.map();
        const xcb_screen_t& screen = display->connection().screen();
        locker.resize(screen.width_in_pixels, screen.height_in_pixels);
        ASSERT_TRUE(awaitChanges(3));
    }
    ASSERT_TRUE(awaitChanges(4));
    EXPECT_EQ(lock->state(), unlockedHere);
    EXPECT_EQ(changes, 4U);
}

/// A copy of an installed locker without its group or capabilities, with which it would not run in
/// containers or take accounts from a file. Runs as an ordinary user.
class RightlessLocker {
  public:
    RightlessLocker(const std::string& name, const std::vector<std::string>& options,
                    const std::string& display) {
        const std::filesystem::path installed = "/usr/bin/" + name;
        if (!std::filesystem::exists(installed)) return;
        using std::filesystem::perms;
        const auto readable = perms::owner_all | perms::group_read | perms::group_exec |
                              perms::others_read | perms::others_exec;
        const auto copy = folder_.path() / name;
        std::filesystem::copy_file(installed, copy);
        for (const auto& path : {copy, folder_.path()})
            std::filesystem::permissions(path, readable);
        std::vector<std::string> words;
        uid_t user = ::geteuid();
        if (user == 0) {
            constexpr uid_t nobody = 65534;
            user = nobody;
            words = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
        }
        const auto write = [this](const char* file, const std::string& text) {
            std::ofstream(folder_.path() / file) << text << '\n';
            return folder_.path().string() + "/" + file;
        };
        const std::string accounts =
            write("passwd", "owner:x:" + std::to_string(user) + ":65534::/:/bin/sh");
        const std::string secrets =
            write("shadow", "owner:$6$salt$of-no-password:19000:0:99999:7:::");
        const std::string groups = write("group", "nogroup:x:65534:");
        words.push_back(copy);
        words.insert(words.end(), options.begin(), options.end());
        auto started = ChildProcess::start(
            {.arguments = words,
             .environment = {"DISPLAY=" + display, "LD_PRELOAD=libnss_wrapper.so",
                             "NSS_WRAPPER_PASSWD=" + accounts, "NSS_WRAPPER_SHADOW=" + secrets,
                             "NSS_WRAPPER_GROUP=" + groups},
             .endSignal = SIGKILL});
        if (started) process_.emplace(*std::move(started));
    }

    [[nodiscard]] bool isThere() const { return process_.has_value(); }
    void kill() { process_.reset(); }

  private:
    TemporaryFolder folder_;
    std::optional<ChildProcess> process_;
};

TEST_F(X11SessionTest, noticesLockersWithRightsOfTheirOwnAndTypesNothingIntoThem) {
    EXPECT_EQ(lock->locker(), (SessionLocker{.isPresent = false}));
    XTestKeyEvents typing(display->name());
    std::size_t told = 0;
    const std::vector<std::pair<std::string, std::vector<std::string>>> lockers{
        {"slock", {}}, {"xtrlock", {}}, {"xtrlock", {"-b"}}};
    std::size_t tried = 0;
    for (const auto& [name, options] : lockers) {
        RightlessLocker locker(name, options, display->name());
        if (!locker.isThere()) continue;
        ++tried;
        ASSERT_TRUE(awaitChanges(++told)) << name;
        EXPECT_EQ(lock->state(), lockedHere) << name;
        EXPECT_EQ(lock->locker(), (SessionLocker{.untyped = name})) << name;
        const auto source = typing.makeSource(std::u16string_view(u"secret"), {});
        ASSERT_TRUE(source);
        EXPECT_FALSE(source->isAdmitted([] { return true; })) << name;
        locker.kill();
        ASSERT_TRUE(awaitChanges(++told)) << name;
        EXPECT_EQ(lock->state(), unlockedHere) << name;
    }
    if (tried < lockers.size()) GTEST_SKIP() << "Skipped: needs slock and xtrlock.";
}

TEST_F(X11SessionTest, isOffTheConsoleWhileItsTerminalIs) {
    for (const bool isOnConsole : {false, true}) {
        display->setRootProperty("XFree86_has_VT", isOnConsole ? 1 : 0);
        EXPECT_TRUE(loop.runUntil([&] { return lock->state() == LockState{false, isOnConsole}; }));
    }
}

TEST_F(X11SessionTest, followsTheSpaceKeyThroughLayoutChanges) {
    const auto listening = listen();
    ASSERT_TRUE(listening);
    constexpr std::uint8_t unusedKeycode = 200;
    display->mapKey(unusedKeycode, XKB_KEY_space);
    display->mapKey(65, XKB_KEY_x);
    // The first key may arrive before the new layout is read.
    ASSERT_TRUE(loop.runUntil([&] {
        display->tap(XKB_KEY_space);
        return spaces > 0;
    }));
}

TEST_F(X11SessionTest, mayStopListeningInItsCallback) {
    std::unique_ptr<SpaceKeys::Listening> brief;
    int calls = 0;
    brief = keys->listen([&](const auto&) {
        ++calls;
        brief.reset();
    });
    const auto listening = listen();
    ASSERT_TRUE(brief && listening);
    display->tap(XKB_KEY_space);
    display->tap(XKB_KEY_space);
    ASSERT_TRUE(loop.runUntil([&] { return spaces >= 2; }));
    EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace marrowby
