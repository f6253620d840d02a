#include "Rehearsal/DesktopUser.h"
#include "Rehearsal/PrivateDesktop.h"
#include "Rehearsal/ScreenLocker.h"
#include "Tests/Platforms/Linux/KeyringDaemon.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/Program/StagedProgram.h"
#include "UnlockCore/Platform/KeyCodes.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr const char* password = "Corr3ct-HoRse_b@ttery!";
constexpr std::uint32_t space = 0x0020;
constexpr std::uint32_t tab = 0xFF09;

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

/// A desktop of its own: a screen, a bus, a keyring that is unlocked, and a user's folders.
class UnlockProgramTest : public testing::Test {
  protected:
    void SetUp() override {
        if (!bus) GTEST_SKIP() << noPrivateBus;
        keyring = KeyringDaemon::start(*bus, home.path(), "login");
        if (!keyring) GTEST_SKIP() << noKeyringDaemon;
        auto created = PrivateDesktop::create();
        ASSERT_TRUE(created) << created.error();
        desktop.emplace(*std::move(created));
        locker = std::make_unique<ScreenLocker>(desktop->displayName());
        auto somebody = DesktopUser::create(desktop->displayName());
        ASSERT_TRUE(somebody) << somebody.error();
        hands.emplace(*std::move(somebody));

        environment = QProcessEnvironment::systemEnvironment();
        environment.insert("DISPLAY", QString::fromStdString(desktop->displayName()));
        environment.insert("QT_QPA_PLATFORM", "xcb");
        environment.insert("DBUS_SESSION_BUS_ADDRESS", QString::fromStdString(bus->address()));
        environment.insert("MARROWBY_NETWORKS", MARROWBY_SOURCE_DIR "/Models");
        environment.remove("WAYLAND_DISPLAY");
        for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME"})
            environment.insert(name, QString::fromStdString(home.path().string()));
        // Patient also with a slow machine.
        std::filesystem::create_directory(home.path() / "marrowby-unlock");
        std::ofstream(home.path() / "marrowby-unlock/settings.json")
            << R"({"unlock.scanSeconds": 10})";
    }

    void start() {
        program.reset();
        program = std::make_unique<StagedProgram>(loop, environment);
        ASSERT_TRUE(program->says("launched")) << program->recentWords();
        ASSERT_TRUE(program->order(std::string("password ") + password));
    }
    /// A second start, which hands over to the first.
    void openWindow() {
        QProcess second;
        second.setProcessEnvironment(environment);
        second.start(MARROWBY_PROGRAM, QStringList());
        ASSERT_TRUE(loop.runUntil([&] { return second.state() == QProcess::NotRunning; }));
        ASSERT_EQ(second.exitCode(), 0) << second.readAllStandardError().toStdString();
    }

    void press(std::uint32_t key) { ASSERT_TRUE(hands->tap(key)); }
    void write(std::u16string_view text) { ASSERT_TRUE(hands->write(text)); }
    void sees(const std::string& page) {
        ASSERT_TRUE(program->says("page: " + page)) << page << "\n" << program->recentWords();
    }

    void setUpThroughTheWindow() {
        ASSERT_TRUE(program->order("seat 4"));
        ASSERT_NO_FATAL_FAILURE(sees("Welcome to Marrowby Unlock"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("What it keeps, and how safe it is"));
        press(space);
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("Allow the camera"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("Allow typing your password"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("Save your face"));
        for (int patience = 0; patience < 12 && !program->hasSaid("page: Name this look");
             ++patience) {
            (void)program->says("never said");
        }
        ASSERT_NO_FATAL_FAILURE(sees("Name this look"));
        write(u"Robin");
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("Save your Mac password"));
        write(u"Corr3ct-HoRse_b@ttery!");
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("When should it look for you?"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees("That’s it"));
        press(xkey::returnKey);
        ASSERT_NO_FATAL_FAILURE(sees(""));
    }

    void lockScreen() {
        const auto locked = locker->lock(password);
        ASSERT_TRUE(locked) << locked.error();
        ASSERT_TRUE(program->says("log: Locked")) << program->recentWords();
    }
    /// Touches a key now and then, as somebody does who wants the screen to wake up.
    [[nodiscard]] bool comesBackUntil(const std::function<bool()>& condition) {
        QTimer touching;
        QObject::connect(&touching, &QTimer::timeout, [this] { press(xkey::leftShift); });
        touching.start(1700);
        return loop.runUntil(condition);
    }

    [[nodiscard]] std::filesystem::path saved(const char* name) const {
        return home.path() / "Marrowby Unlock" / name;
    }

    QtLoop loop;
    TemporaryFolder home;
    std::unique_ptr<PrivateBus> bus = PrivateBus::start();
    std::unique_ptr<KeyringDaemon> keyring;
    std::optional<PrivateDesktop> desktop;
    std::unique_ptr<ScreenLocker> locker;
    std::optional<DesktopUser> hands;
    QProcessEnvironment environment;
    std::unique_ptr<StagedProgram> program;
};

TEST_F(UnlockProgramTest, setsUpSurvivesKillsAndUnlocksOnlyAfterTheOwnerWasThere) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    const std::string faces = contentOf(saved("Faces.sealed"));
    const std::string secret = contentOf(saved("Password.sealed"));
    ASSERT_FALSE(faces.empty() || secret.empty());
    EXPECT_EQ(faces.find("Robin"), std::string::npos);

    // MARROWBY_KILLS: how often; the moments are random, each kill loses nothing of what was saved.
    const char* wish = std::getenv("MARROWBY_KILLS");
    const long wished = wish != nullptr ? std::strtol(wish, nullptr, 10) : 3;
    std::mt19937 moments(std::random_device{}());
    for (long kills = wished; kills > 0; --kills) {
        program.reset();
        program = std::make_unique<StagedProgram>(loop, environment);
        QDeadlineTimer moment(static_cast<int>(moments() % 1500));
        ASSERT_TRUE(loop.runUntil([&] { return moment.hasExpired(); }));
        program->kill();
        ASSERT_EQ(contentOf(saved("Faces.sealed")), faces);
        ASSERT_EQ(contentOf(saved("Password.sealed")), secret);
    }

    // What a restart means: nothing is looked for until the owner was there once.
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(program->order("scene live-normal 4"));
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    press(xkey::leftShift);
    QDeadlineTimer quiet(3500);
    ASSERT_TRUE(comesBackUntil([&] { return quiet.hasExpired(); }));
    EXPECT_FALSE(program->hasSaid("log: Looking")) << program->recentWords();
    EXPECT_TRUE(locker->isRunning());
    locker->kill();

    ASSERT_NO_FATAL_FAILURE(openWindow());
    press(tab);
    press(space);
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    EXPECT_TRUE(comesBackUntil([&] { return program->hasSaid("log: Typed the password"); }))
        << program->recentWords();
    EXPECT_TRUE(program->says("log: Unlocked")) << program->recentWords();
    EXPECT_FALSE(locker->isRunning());
    EXPECT_EQ(program->terminate(), 0) << program->recentWords();
}

TEST_F(UnlockProgramTest, checksWhatIsThereAndCallsNoEndedCheckASuccess) {
    for (const bool isEnded : {false, true}) {
        StagedProgram check(loop, environment, {"--self-check"});
        ASSERT_TRUE(check.says(isEnded ? "ok  Camera permission: "
                                       : "ok  Camera: Rehearsal camera, set to 640 × 480; "))
            << check.recentWords();
        const int status = check.terminate();
        // A slow signal finds the check done.
        const bool isDone = !isEnded || check.hasSaid("ok  Camera: ");
        EXPECT_EQ(status, isDone ? EXIT_SUCCESS : EXIT_FAILURE) << check.recentWords();
    }
}

}  // namespace
}  // namespace marrowby
