// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/Impostor.h"
#include "Tests/Program/ProgramTest.h"
#include "UnlockCore/Engine/UnlockFailure.h"

#include <vector>

#include <unistd.h>

namespace marrowby {
namespace {

constexpr const char* saver = "org.gnome.ScreenSaver";
constexpr const char* logind = "org.freedesktop.login1";
constexpr const char* logindPath = "/org/freedesktop/login1";
constexpr const char* sessionPath = "/org/freedesktop/login1/session/c1";
constexpr const char* mock = "org.freedesktop.DBus.Mock";

/// The owner sits at the camera while a program of theirs claims that the screen is locked.
class ProgramAttackTest : public ProgramTest {
  protected:
    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        logind_ = startMock(*bus, logind, {"--system", "--template", "logind"});
        ASSERT_TRUE(logind_);
        bus->call(logind, logindPath, mock, "AddSession",
                  {"c1", "seat0", quint32{::getuid()}, "somebody", true});
        environment.insert("DBUS_SYSTEM_BUS_ADDRESS", QString::fromStdString(bus->address()));
        environment.insert("XDG_SESSION_ID", "c1");
        ASSERT_NO_FATAL_FAILURE(start());
        ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
        ASSERT_TRUE(program->order("scene live-normal 4"));
        const auto bytes = desktop->terminalBytes();
        ASSERT_TRUE(bytes) << bytes.error();
    }
    void setHint(bool isLocked) const {
        const QVariantMap changed{{"LockedHint", isLocked}};
        bus->call(logind, sessionPath, mock, "UpdateProperties",
                  {"org.freedesktop.login1.Session", changed});
    }
    /// The claim is believed and the owner recognised, yet nothing is typed.
    void expectThatNothingIsTyped() {
        ASSERT_TRUE(program->logs(logevent::locked)) << program->recentWords();
        ASSERT_TRUE(comesBackUntil([&] { return program->hasLogged(logevent::recognised); }))
            << program->recentWords();
        EXPECT_TRUE(program->logs(logevent::failed, title(UnlockFailure::TypingFailed{}).english()))
            << program->recentWords();
    }
    void expectNothingFor(std::vector<std::string> disguise) {
        disguise.insert(disguise.begin(), MARROWBY_IMPOSTOR);
        {
            Impostor impostor(desktop->displayName(), disguise);
            ASSERT_TRUE(impostor.hasBegun());
            ASSERT_NO_FATAL_FAILURE(expectThatNothingIsTyped());
            EXPECT_EQ(impostor.characters(), 0U);
        }
        ASSERT_NO_FATAL_FAILURE(endClaim());
    }
    /// Waits for the program to see that nothing claims a lock any more: it takes an order after
    /// what came before. Two claims without a gap would be one lock.
    void endClaim() {
        ASSERT_NO_FATAL_FAILURE(expectAnUntouchedTerminal());
        ASSERT_TRUE(program->order("owner yes"));
    }

  private:
    MockService logind_;
};

TEST_F(ProgramAttackTest, typesNothingWhenAProgramOnlyClaimsALock) {
    {
        SCOPED_TRACE("a fake screen saver");
        const auto gnome = startMock(*bus, saver, {"--session", "--template", "gnome_screensaver"});
        ASSERT_TRUE(gnome);
        bus->call(saver, "/org/gnome/ScreenSaver", saver, "SetActive", {true});
        ASSERT_NO_FATAL_FAILURE(expectThatNothingIsTyped());
        bus->call(saver, "/org/gnome/ScreenSaver", saver, "SetActive", {false});
        ASSERT_NO_FATAL_FAILURE(endClaim());
    }
    {
        SCOPED_TRACE("a window of xsecurelock's class");
        ASSERT_NO_FATAL_FAILURE(expectNothingFor({"xsecurelock"}));
    }
    {
        SCOPED_TRACE("a window of i3lock's class and the keyboard");
        ASSERT_NO_FATAL_FAILURE(expectNothingFor({"i3lock", "grab"}));
    }
    {
        SCOPED_TRACE("xscreensaver's window and state and the keyboard");
        ASSERT_NO_FATAL_FAILURE(expectNothingFor({"xscreensaver", "saver", "grab"}));
    }
    {
        SCOPED_TRACE("the session's hint");
        setHint(true);
        ASSERT_NO_FATAL_FAILURE(expectThatNothingIsTyped());
        setHint(false);
        ASSERT_NO_FATAL_FAILURE(endClaim());
    }
    SCOPED_TRACE("a locker");
    ASSERT_NO_FATAL_FAILURE(expectThatItUnlocks());
}

}  // namespace
}  // namespace marrowby
