// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Hostile/Ground/GuardedTyping.h"
#include "Tests/Hostile/Ground/Impostor.h"
#include "Tests/Hostile/Ground/WorkingDesktop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <array>
#include <expected>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>

namespace marrowby {
namespace {

constexpr const char* password = "Corr3ct-HoRse_b@ttery!";

/// A desktop in use, and the product's typing, which is told that the screen is locked.
class Attack : public testing::Test {
  protected:
    void SetUp() override {
        auto created = WorkingDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop.emplace(std::move(*created));
        keyEvents.emplace(desktop->displayName());
        keyboard = desktop->keyboard();
    }

    /// The terminal received nothing and the keymap is unchanged.
    void expectDesktopUntouched() {
        const auto bytes = desktop->terminalBytes();
        ASSERT_TRUE(bytes) << bytes.error();
        EXPECT_EQ(bytes->size(), 0U);
        EXPECT_EQ(desktop->keyboard(), keyboard);
    }
    void expectRefusal() {
        GuardedTyping typing(*keyEvents, password);
        EXPECT_FALSE(typing.outcome());
    }
    [[nodiscard]] std::filesystem::path impostor() const { return MARROWBY_IMPOSTOR; }

    std::optional<WorkingDesktop> desktop;
    std::optional<XTestKeyEvents> keyEvents;
    std::vector<std::uint32_t> keyboard;

  private:
    int argumentCount_ = 1;
    std::string name_ = "HostileTests";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_.data()};
};

TEST_F(Attack, nothingIsTypedWithoutALocker) {
    expectRefusal();
    expectDesktopUntouched();
}

struct Impersonation {
    const char* name;
    /// IMPOSTOR stands for the impostor's path, NAMED for that of a copy named i3lock.
    std::vector<std::string> command;
    friend void PrintTo(const Impersonation& one, std::ostream* out) { *out << one.name; }
};

class Impersonating : public Attack, public testing::WithParamInterface<Impersonation> {};

TEST_P(Impersonating, getsNoCharacter) {
    auto folder = PrivateFolder::create();
    ASSERT_TRUE(folder) << folder.error();
    const std::string named = folder->path() / "i3lock";
    std::filesystem::copy_file(impostor(), named);
    std::vector<std::string> command = GetParam().command;
    for (auto& word : command) {
        for (const auto& [sign, file] :
             {std::pair("IMPOSTOR", impostor().string()), std::pair("NAMED", named)}) {
            if (const auto place = word.find(sign); place != std::string::npos)
                word.replace(place, std::string_view(sign).size(), file);
        }
    }
    if (!std::filesystem::exists(command.front()) && command.front().starts_with('/'))
        GTEST_SKIP() << "Skipped: there is no " << command.front() << ".";
    Impostor attacker(desktop->displayName(), command);
    if (!attacker.hasBegun()) GTEST_SKIP() << "Skipped: this impostor cannot run here.";
    expectRefusal();
    EXPECT_EQ(attacker.characters(), 0U);
    expectDesktopUntouched();
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, Impersonating,
    testing::Values(
        Impersonation{"aWindowOfXsecurelocksClass", {"IMPOSTOR", "xsecurelock"}},
        Impersonation{"aWindowAndAGrabOfI3locksClass", {"IMPOSTOR", "i3lock", "grab"}},
        Impersonation{"aWindowAndAGrabAndAStateOfXscreensavers",
                      {"IMPOSTOR", "xscreensaver", "saver", "grab"}},
        Impersonation{"aProgramOfI3locksName", {"NAMED", "i3lock", "grab"}},
        Impersonation{"aProgramOfI3locksNameInTheBackground",
                      {"NAMED", "i3lock", "grab", "background"}},
        Impersonation{"aProgramRunByOneOfRoots",
                      {"/lib64/ld-linux-x86-64.so.2", "IMPOSTOR", "i3lock", "grab"}},
        // Needs user namespaces: in its own mount namespace the impostor lies at i3lock's path.
        Impersonation{
            "aProgramAtI3locksPathInFilesOfItsOwn",
            {"unshare", "--map-root-user", "--mount", "sh", "-c",
             "mount --bind IMPOSTOR /usr/bin/i3lock && exec /usr/bin/i3lock i3lock grab"}}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Attack, nothingIsTypedWhileAMenuHoldsTheKeyboard) {
    desktop->clickOnTheDesktop(3);
    ASSERT_TRUE(desktop->awaitGrab());
    expectRefusal();
    desktop->tap(keycode::escape);
    expectDesktopUntouched();
}

TEST_F(Attack, nothingIsTypedWhileAltTabIsHeld) {
    // openbox regrabs its keys at the first XTEST key, and misses that key if it is busy.
    bool isHeld = false;
    for (int tries = 0; tries < 10; ++tries) {
        desktop->press(keycode::leftAlt, true);
        desktop->tap(keycode::tab);
        isHeld = desktop->awaitHeldKeyboard(std::chrono::seconds(2));
        if (isHeld) break;
        desktop->press(keycode::leftAlt, false);
        ASSERT_TRUE(desktop->terminalBytes());
    }
    ASSERT_TRUE(isHeld);
    expectRefusal();
    desktop->press(keycode::leftAlt, false);
    expectDesktopUntouched();
}

TEST_F(Attack, nothingIsTypedIntoATerminalThatGrabsTheKeyboardBelowAnImpostor) {
    desktop->tap(keycode::f12);
    ASSERT_TRUE(desktop->awaitHeldKeyboard());
    Impostor attacker(desktop->displayName(), {impostor(), "i3lock"});
    ASSERT_TRUE(attacker.hasBegun());
    expectRefusal();
    EXPECT_EQ(attacker.characters(), 0U);
    expectDesktopUntouched();
}

enum class Concurrent { none, compositor, inputMethod };

/// A compositor or input method that runs during the test, with its child processes.
class ConcurrentProgram {
  public:
    /// Blocks until it works, at most 20 s.
    ConcurrentProgram(const WorkingDesktop& desktop, Concurrent kind)
        : folder_(PrivateFolder::create().value()),
          program_(ChildProcess::start(
              {.arguments = command(kind),
               .environment = {"DISPLAY=" + desktop.displayName(),
                               "HOME=" + folder_.path().string(),
                               "XDG_RUNTIME_DIR=" + folder_.path().string(), "NO_AT_BRIDGE=1"},
               .endSignal = SIGKILL})) {
        const QDeadlineTimer deadline(20'000);
        while (program_ && program_->isRunning() && !isRunning_ && !deadline.hasExpired())
            isRunning_ = isReady(desktop.connection(), kind);
    }
    ~ConcurrentProgram() {
        if (program_) ::kill(-program_->id(), SIGKILL);
    }
    ConcurrentProgram(const ConcurrentProgram&) = delete;
    ConcurrentProgram& operator=(const ConcurrentProgram&) = delete;

    [[nodiscard]] bool isRunning() const { return isRunning_; }

  private:
    static std::vector<std::string> command(Concurrent kind) {
        if (kind == Concurrent::compositor) return {"picom", "--backend", "xrender"};
        return {"dbus-run-session", "--", "ibus-daemon", "--xim", "--panel", "disable"};
    }
    static bool isReady(const XcbConnection& connection, Concurrent kind) {
        xcb_connection_t* const xcb = connection.get();
        if (kind == Concurrent::compositor) {
            const auto owner = connection.reply<xcb_get_selection_owner_reply>(
                xcb_get_selection_owner(xcb, connection.atom("_NET_WM_CM_S0")));
            return owner && owner->owner != XCB_NONE;
        }
        const auto servers = connection.reply<xcb_get_property_reply>(
            xcb_get_property(xcb, 0, connection.root(), connection.atom("XIM_SERVERS"),
                             XCB_GET_PROPERTY_TYPE_ANY, 0, 1));
        return servers && servers->type != XCB_NONE;
    }

    PrivateFolder folder_;
    std::expected<ChildProcess, std::string> program_;
    bool isRunning_ = false;
};

struct Ending {
    const char* name;
    ScreenLocker::Kind locker;
    /// 0: unlocked with the password.
    int signal;
    /// An impostor waits to grab the keyboard.
    bool hasWaitingImpostor;
    Concurrent concurrent;
    friend void PrintTo(const Ending& one, std::ostream* out) { *out << one.name; }
};

class EndingLocker : public Attack, public testing::WithParamInterface<Ending> {};

/// The locker ends during the typing, by a signal or an unlock.
TEST_P(EndingLocker, leaksNoCharacterToTheNextWindow) {
    constexpr int tries = 12;
    const Ending& ending = GetParam();
    std::optional<ConcurrentProgram> concurrent;
    if (ending.concurrent != Concurrent::none) {
        concurrent.emplace(*desktop, ending.concurrent);
        if (!concurrent->isRunning()) GTEST_SKIP() << "Skipped: picom or ibus is not installed.";
    }
    ScreenLocker locker(desktop->displayName(), ending.locker);
    int stopped = 0;
    for (int i = 0; i < tries; ++i) {
        const auto locked = locker.lock("asdfghj");
        if (!locked) GTEST_SKIP() << "Skipped: " << locked.error();
        std::optional<Impostor> attacker;
        if (ending.hasWaitingImpostor) {
            attacker.emplace(desktop->displayName(),
                             std::vector<std::string>{impostor(), "i3lock", "grab"}, false);
        }
        if (ending.signal == 0) {
            // Someone unlocks with the password shortly before.
            desktop->tap(keycode::leftShift);
            for (std::uint8_t key = keycode::letterA; key < keycode::letterA + 7; ++key)
                desktop->tap(key);
            desktop->tap(keycode::returnKey);
            std::this_thread::sleep_for(std::chrono::milliseconds(50 * i));
        }
        std::jthread killer([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(6 * i));
            if (ending.signal != 0) (void)locker.send(ending.signal);
        });
        GuardedTyping typing(*keyEvents, password);
        stopped += typing.outcome() ? 0 : 1;
        killer.join();
        locker.kill();
        if (attacker) {
            EXPECT_EQ(attacker->characters(), 0U) << i;
        }
        ASSERT_NO_FATAL_FAILURE(expectDesktopUntouched()) << i;
    }
    EXPECT_GT(stopped, 0);
}

constexpr auto i3lock = ScreenLocker::Kind::i3lock;
constexpr auto xsecurelock = ScreenLocker::Kind::xsecurelock;

INSTANTIATE_TEST_SUITE_P(
    Endings, EndingLocker,
    testing::Values(
        Ending{"i3lockByThePassword", i3lock, 0, false, Concurrent::none},
        Ending{"xsecurelockByThePassword", xsecurelock, 0, false, Concurrent::none},
        Ending{"i3lockKilledWhileAnotherWantsTheKeyboard", i3lock, SIGKILL, true, Concurrent::none},
        Ending{"i3lockByThePasswordWhileAnotherWantsTheKeyboard", i3lock, 0, true,
               Concurrent::none},
        Ending{"i3lockKilledUnderACompositor", i3lock, SIGKILL, false, Concurrent::compositor},
        Ending{"xsecurelockKilledBesideAnInputMethod", xsecurelock, SIGKILL, false,
               Concurrent::inputMethod}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(Attack, typingIsAcceptedBesideACompositorAndAnInputMethod) {
    const ConcurrentProgram compositor(*desktop, Concurrent::compositor);
    const ConcurrentProgram inputMethod(*desktop, Concurrent::inputMethod);
    if (!compositor.isRunning() || !inputMethod.isRunning())
        GTEST_SKIP() << "Skipped: picom or ibus is not installed.";
    for (const auto kind : {i3lock, xsecurelock, ScreenLocker::Kind::mateScreensaver}) {
        ScreenLocker locker(desktop->displayName(), kind);
        const auto locked = locker.lock(password);
        if (!locked) GTEST_SKIP() << "Skipped: " << locked.error();
        GuardedTyping typing(*keyEvents, password, [&] { return locker.isRunning(); });
        EXPECT_TRUE(typing.outcome());
        const QDeadlineTimer deadline(20'000);
        while (locker.isRunning() && !deadline.hasExpired())
            QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        EXPECT_FALSE(locker.isRunning());
        ASSERT_NO_FATAL_FAILURE(expectDesktopUntouched());
    }
}

}  // namespace
}  // namespace marrowby
