// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/Linux/Desktop/Keysyms.h"
#include "Simulation/Desktop/DesktopUser.h"
#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Hostile/Ground/WorkingDesktop.h"
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/Program/StagedProgram.h"
#include "UnlockCore/Engine/LogLine.h"

#include <QProcessEnvironment>
#include <QTimer>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {

inline constexpr const char* ownersPassword = "Corr3ct-HoRse_b@ttery!";
inline constexpr std::uint32_t spaceKey = 0x0020;
inline constexpr std::uint32_t tabKey = 0xFF09;
/// ASAN_OPTIONS of a program that uses what Qt leaks: it knows those leaks by their stacks.
inline constexpr const char* wholeStacks = "fast_unwind_on_malloc=0";

/// The program on a private desktop: window manager, focused terminal, bus, unlocked keyring, home
/// folders.
class ProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        keyring = startKeyring(*bus, home.path(), "login");
        if (!keyring) GTEST_SKIP() << noKeyringDaemon;
        auto created = WorkingDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop.emplace(*std::move(created));
        locker = std::make_unique<ScreenLocker>(desktop->displayName());
        auto somebody = DesktopUser::create(desktop->displayName());
        ASSERT_TRUE(somebody) << somebody.error();
        hands.emplace(*std::move(somebody));

        environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", QString::fromStdString(desktop->displayName()));
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(bus->address()));
        environment.insert("MARROWBY_MODELS", MARROWBY_SOURCE_DIR "/Models");
        environment.insert("WAYLAND_DISPLAY", "");
        environment.insert("LC_ALL", "C.UTF-8");
        environment.insert("LANGUAGE", "");
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            environment.insert(name, QString::fromStdString(home.path().string()));
        // Long scans for slow machines.
        std::filesystem::create_directory(home.path() / "marrowby-unlock");
        std::ofstream(home.path() / "marrowby-unlock/settings.json")
            << R"({"unlock.scanSeconds": 10})";
    }

    void start(std::vector<std::string> arguments = {}) {
        program.reset();
        program = std::make_unique<StagedProgram>(loop, environment, std::move(arguments));
        ASSERT_TRUE(program->says("launched")) << program->recentWords();
        ASSERT_TRUE(program->order(std::string("password ") + ownersPassword));
    }
    /// Starts a second instance, which hands over to the first.
    void openWindow() {
        const std::string reply = tell({});
        ASSERT_TRUE(reply.starts_with("0 ")) << reply;
    }

    std::string tell(std::vector<std::string> words) {
        return commandReply(loop, environment, std::move(words));
    }

    void touch() { ASSERT_TRUE(hands->tap(xkey::leftShift)); }
    /// Presses a key once the program's window has the focus; the terminal would get it before.
    void press(std::uint32_t key) {
        ASSERT_TRUE(loop.runUntil([this] { return program->hasFocus(); }))
            << program->recentWords();
        ASSERT_TRUE(hands->tap(key));
    }
    void write(std::string_view text) { ASSERT_TRUE(hands->write(text)); }
    void sees(const std::string& page) {
        ASSERT_TRUE(program->says("page: " + page)) << page << "\n" << program->recentWords();
    }

    /// The welcome window up to the page after the face's name.
    void captureThroughTheWindow(bool asksForTyping) {
        // First, because the page may have been told before this is called.
        ASSERT_NO_FATAL_FAILURE(sees("Welcome to Marrowby Unlock"));
        ASSERT_TRUE(program->order("seat 4"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("What it keeps, and how safe it is"));
        press(spaceKey);
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("Allow the camera"));
        press(xkey::returnKey);
        if (asksForTyping) {
            ASSERT_NO_FATAL_FAILURE(sees("Allow typing your password"));
            press(xkey::returnKey);
        }
        ASSERT_NO_FATAL_FAILURE(sees("Save your face"));
        bool isNamed = false;
        for (int attempts = 0; attempts < 12 && !isNamed; ++attempts)
            isNamed = program->says("page: Name this look");
        ASSERT_TRUE(isNamed) << program->recentWords();
        write("Robin");
        press(xkey::returnKey);
    }
    /// From the page about the triggers.
    void finishTheWindow() {
        ASSERT_NO_FATAL_FAILURE(sees("When should it look for you?"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("That’s it"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees(""));
    }
    void setUpThroughTheWindow() {
        ASSERT_NO_FATAL_FAILURE(captureThroughTheWindow(true));
        ASSERT_NO_FATAL_FAILURE(sees("Save your login password"));
        write(ownersPassword);
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(finishTheWindow());
    }
    /// Where the desktop is asked to unlock, to which the owner agrees.
    void setUpWithConsent() {
        ASSERT_NO_FATAL_FAILURE(captureThroughTheWindow(false));
        ASSERT_NO_FATAL_FAILURE(sees("Unlock without your password?"));
        press(spaceKey);
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(finishTheWindow());
        EXPECT_FALSE(std::filesystem::exists(saved("Password.sealed")));
    }

    void lockScreen() {
        const auto locked = locker->lock(ownersPassword);
        ASSERT_TRUE(locked) << locked.error();
        ASSERT_TRUE(program->logs(logevent::locked)) << program->recentWords();
    }
    /// The terminal has the focus whenever neither the program's windows nor a locker are shown.
    void expectAnUntouchedTerminal() {
        const auto bytes = desktop->terminalBytes();
        ASSERT_TRUE(bytes) << bytes.error();
        EXPECT_EQ(bytes->size(), 0U);
    }
    /// Taps a key now and then, as a user does to wake the screen, until the condition holds.
    [[nodiscard]] bool comesBackUntil(const std::function<bool()>& condition) {
        QTimer touching;
        QObject::connect(&touching, &QTimer::timeout, [this] { touch(); });
        touching.start(1700);
        return loop.runUntil(condition);
    }
    /// Locks the screen and comes back until the password was typed, the locker has ended and the
    /// program has noticed. It logs `typed` and `unlocked` only where the screen is still locked
    /// when it learns that typing has ended.
    void expectThatItUnlocks() {
        ASSERT_NO_FATAL_FAILURE(lockScreen());
        EXPECT_TRUE(comesBackUntil([&] { return program->hasLogged(logevent::road); }) &&
                    loop.runUntil([&] { return !locker->isRunning(); }) &&
                    (!program->hasLogged(logevent::typed) || program->logs(logevent::unlocked)))
            << program->recentWords();
    }

    [[nodiscard]] std::filesystem::path saved(const char* name) const {
        return home.path() / "Marrowby Unlock" / name;
    }

    QtLoop loop;
    TemporaryFolder home;
    std::unique_ptr<PrivateBus> bus = startBusForMocks();
    std::unique_ptr<PrivateKeyring> keyring;
    std::optional<WorkingDesktop> desktop;
    std::unique_ptr<ScreenLocker> locker;
    std::optional<DesktopUser> hands;
    QProcessEnvironment environment;
    std::unique_ptr<StagedProgram> program;
};

}  // namespace marrowby
