// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Vision/OnnxFile.h"
#include "Tests/Program/ProgramTest.h"

#include <cstdlib>
#include <iterator>
#include <random>

#include <gmock/gmock.h>

namespace marrowby {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator(stream), {}};
}

class UnlockProgramTest : public ProgramTest {
  protected:
    /// A valid pack with another embedder file: it differs by an unknown protobuf field at its end,
    /// so that it computes the same.
    void exchangeModels() {
        const std::filesystem::path others = home.path() / "models";
        std::filesystem::copy(MARROWBY_SOURCE_DIR "/Models", others);
        const std::string before = OnnxFile::read(others / "Embedder.onnx")->sha256();
        std::ofstream(others / "Embedder.onnx", std::ios::app | std::ios::binary) << "\xC0\x3E\x01";
        const auto changed = OnnxFile::read(others / "Embedder.onnx");
        ASSERT_TRUE(changed) << changed.error();
        std::string manifest = contentOf(others / "pack.json");
        const std::size_t at = manifest.find(before);
        ASSERT_NE(at, std::string::npos);
        std::ofstream(others / "pack.json")
            << manifest.replace(at, before.size(), changed->sha256());
        environment.insert("MARROWBY_MODELS", QString::fromStdString(others.string()));
    }
};

TEST_F(UnlockProgramTest, setsUpSurvivesKillsAndUnlocksOnlyAfterAProofOfPresence) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    const std::string faces = contentOf(saved("Faces.sealed"));
    const std::string secret = contentOf(saved("Password.sealed"));
    ASSERT_FALSE(faces.empty() || secret.empty());
    EXPECT_EQ(faces.find("Robin"), std::string::npos);

    // MARROWBY_KILLS kills at random moments, which MARROWBY_SEED repeats; none loses saved data.
    const char* setting = std::getenv("MARROWBY_KILLS");
    const long killCount = setting != nullptr ? std::strtol(setting, nullptr, 10) : 3;
    const char* given = std::getenv("MARROWBY_SEED");
    const auto seed = given != nullptr ? static_cast<unsigned>(std::strtoul(given, nullptr, 10))
                                       : std::random_device{}();
    SCOPED_TRACE("MARROWBY_SEED=" + std::to_string(seed));
    std::mt19937 moments(seed);
    for (long kills = killCount; kills > 0; --kills) {
        program.reset();
        program = std::make_unique<StagedProgram>(loop, environment);
        QDeadlineTimer moment(static_cast<int>(moments() % 1500));
        ASSERT_TRUE(loop.runUntil([&] { return moment.hasExpired(); }));
        program->kill();
        ASSERT_EQ(contentOf(saved("Faces.sealed")), faces);
        ASSERT_EQ(contentOf(saved("Password.sealed")), secret);
    }

    // After a restart there are no scans until the owner has proved their presence once.
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(program->order("scene live-normal 4"));
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    touch();
    QDeadlineTimer quiet(3500);
    ASSERT_TRUE(comesBackUntil([&] { return quiet.hasExpired(); }));
    EXPECT_FALSE(program->hasLogged(logevent::looking)) << program->recentWords();
    EXPECT_TRUE(locker->isRunning());
    locker->kill();

    ASSERT_NO_FATAL_FAILURE(openWindow());
    press(tabKey);
    press(spaceKey);
    ASSERT_NO_FATAL_FAILURE(expectThatItUnlocks());

    // Terminated during the typing or just after it.
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    EXPECT_TRUE(comesBackUntil([&] { return program->hasLogged(logevent::recognised); }))
        << program->recentWords();
    EXPECT_EQ(program->terminate(), 0) << program->recentWords();
    locker->kill();

    // With other models than those of the saved face there are no scans, even if they compute the
    // same.
    ASSERT_NO_FATAL_FAILURE(exchangeModels());
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_TRUE(program->order("scene live-normal 4"));
    ASSERT_NO_FATAL_FAILURE(openWindow());
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    press(tabKey);
    press(spaceKey);
    EXPECT_TRUE(program->logs(logevent::modelsChanged)) << program->recentWords();
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    quiet.setRemainingTime(3500);
    ASSERT_TRUE(comesBackUntil([&] { return quiet.hasExpired(); }));
    EXPECT_FALSE(program->hasLogged(logevent::looking)) << program->recentWords();
    EXPECT_EQ(program->terminate(), 0) << program->recentWords();
    locker->kill();
    expectAnUntouchedTerminal();
}

TEST_F(UnlockProgramTest, endsWithAnErrorWhenTheDisplayIsLostDuringTyping) {
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    ASSERT_TRUE(program->order("scene live-normal 4"));
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    ASSERT_TRUE(comesBackUntil([&] { return program->hasLogged(logevent::recognised); }))
        << program->recentWords();
    // During the typing or just after it.
    desktop.reset();
    EXPECT_EQ(program->awaitEnd(), EXIT_FAILURE) << program->recentWords();
    EXPECT_TRUE(program->hasLogged(logevent::displayLost)) << program->recentWords();
}

TEST_F(UnlockProgramTest, obeysCommandsFromATerminal) {
    for (const char* command : {"status", "look", "pause", "resume", "settings", "quit"})
        EXPECT_EQ(tell({command}),
                  "3 Marrowby Unlock isn’t running: open it from the applications menu.\n");
    EXPECT_THAT(tell({"doctor"}), AllOf(StartsWith("1 NO  Running: Marrowby Unlock isn’t running"),
                                        HasSubstr("\nok  Camera: Rehearsal camera")));

    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_THAT(tell({"status"}), StartsWith("1 Not set up yet: "));
    EXPECT_EQ(tell({"look"}), "1 Not set up yet.\n");
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    EXPECT_THAT(tell({"status"}), StartsWith("1 No screen locker has been seen yet: "));
    ASSERT_NO_FATAL_FAILURE(lockScreen());
    locker->kill();
    EXPECT_TRUE(loop.runUntil([&] { return tell({"status"}).starts_with("0 Ready: "); }));
    EXPECT_THAT(tell({"doctor"}),
                AllOf(StartsWith("0 ok  Status: Ready"), HasSubstr("\nok  Camera: ")));

    const struct {
        const char* scene;
        const char* answer;
    } looks[] = {
        {"scene live-normal 4", "0 Recognised\nAt the lock screen it would type your password"},
        {"scene live-normal 7", "1 Not recognised\nAt the lock screen it would not unlock"},
    };
    for (const auto& [scene, answer] : looks) {
        ASSERT_TRUE(program->order(scene));
        EXPECT_THAT(tell({"look"}), StartsWith(answer)) << scene;
    }
    expectAnUntouchedTerminal();

    // The same with the keys, on a page of the settings.
    EXPECT_EQ(tell({"settings"}), "0 ");
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    ASSERT_TRUE(program->says("focus: Unlock with your face"));
    bool isThere = false;
    for (int tabs = 0; tabs < 30 && !isThere; ++tabs) {
        press(tabKey);
        ASSERT_TRUE(loop.runUntil([&] { return program->hasSaid("focus: "); }));
        isThere = program->hasSaid("focus: Try It…");
        ASSERT_TRUE(program->says("focus: "));
    }
    ASSERT_TRUE(isThere);
    ASSERT_TRUE(program->order("scene live-normal 4"));
    press(spaceKey);
    ASSERT_NO_FATAL_FAILURE(sees("Try it"));
    EXPECT_TRUE(program->says("status: It would unlock")) << program->recentWords();
    ASSERT_TRUE(program->order("scene live-normal 7"));
    EXPECT_TRUE(program->says("status: It would not unlock")) << program->recentWords();
    EXPECT_THAT(tell({"look"}), StartsWith(looks[1].answer));
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    expectAnUntouchedTerminal();

    EXPECT_EQ(tell({"pause", "5"}), "0 Paused for 5 minutes.\n");
    EXPECT_THAT(tell({"status"}), StartsWith("1 Paused: "));
    EXPECT_EQ(tell({"resume"}), "0 Resumed.\n");
    EXPECT_THAT(tell({"look", "twice"}), StartsWith("2 Marrowby Unlock knows no “twice”"));
    EXPECT_EQ(tell({"quit"}), "0 ");
    EXPECT_EQ(program->awaitEnd(), EXIT_SUCCESS) << program->recentWords();

    // What is saved no longer opens.
    std::ofstream(saved("Password.sealed"), std::ios::binary) << std::string(64, '\1');
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(sees("Marrowby Unlock"));
    EXPECT_THAT(tell({"status"}), StartsWith("1 Needs your password once this session: "));
    press(tabKey);
    press(spaceKey);
    EXPECT_TRUE(loop.runUntil([&] {
        return tell({"status"}).starts_with("1 The saved login password can’t be read: ");
    }));
    EXPECT_EQ(tell({"quit"}), "0 ");
    EXPECT_EQ(program->awaitEnd(), EXIT_SUCCESS) << program->recentWords();
    const auto settings = home.path() / "marrowby-unlock/settings.json";
    std::filesystem::remove(settings);
    std::filesystem::create_directory(settings);
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_THAT(
        tell({"doctor"}),
        HasSubstr("\nNO  Last problem: The settings couldn’t be read and won’t be saved: "));
}

TEST_F(UnlockProgramTest, speaksTheUsersLanguage) {
    environment.insert("LANGUAGE", "de");
    ASSERT_NO_FATAL_FAILURE(start());
    EXPECT_EQ(tell({"status"}),
              "1 Noch nicht eingerichtet: Sichern Sie Ihr Gesicht und Ihr Login-Passwort; dann ist "
              "es bereit.\n");
    EXPECT_EQ(tell({"pause", "2"}), "0 Pause für 2 Minuten.\n");
    EXPECT_THAT(tell({"dance"}), StartsWith("2 Marrowby Unlock kennt „dance“ nicht"));
    // The log is for those who maintain it.
    EXPECT_THAT(program->recentWords(), testing::HasSubstr("Paused"));
    EXPECT_EQ(tell({"quit"}), "0 ");
    EXPECT_EQ(program->awaitEnd(), EXIT_SUCCESS) << program->recentWords();
}

TEST_F(UnlockProgramTest, preparesItsModelsFromItsWindow) {
    // Installed beside a script that stops in the middle, goes on the next time, and then fails.
    const auto root = home.path() / "installed";
    std::filesystem::create_directories(root / "bin");
    std::filesystem::create_directories(root / "share/marrowby-unlock");
    std::filesystem::copy(MARROWBY_PROGRAM, root / "bin");
    const auto script = root / "share/marrowby-unlock/prepare-pack";
    const std::string models = (home.path() / "prepared").string();
    std::ofstream(script) << "#!/bin/sh\necho 7 %\n"
                          << "cd " << home.path()
                          << "\n[ -e begun ] || { touch begun; exec sleep 600; }\n"
                          << "[ -e failed ] || { touch failed; echo No network. >&2; exit 1; }\n"
                          << "cp -r " MARROWBY_SOURCE_DIR "/Models " << models << "\n";
    std::filesystem::permissions(script, std::filesystem::perms{0700});
    environment.insert("MARROWBY_MODELS", QString::fromStdString(models));
    program = std::make_unique<StagedProgram>(
        loop, environment, std::vector<std::string>(),
        (root / "bin" / std::filesystem::path(MARROWBY_PROGRAM).filename()).string());
    const auto saysThat = [&](const char* problem) {
        return loop.runUntil([&] { return tell({"status"}).starts_with(problem); });
    };
    EXPECT_TRUE(saysThat("1 ")) << program->recentWords();
    press(xkey::returnKey);
    ASSERT_TRUE(loop.runUntil([&] { return std::filesystem::exists(home.path() / "begun"); }));
    press(xkey::returnKey);
    EXPECT_TRUE(saysThat("1 It was stopped.")) << program->recentWords();
    press(xkey::returnKey);
    EXPECT_TRUE(saysThat("1 No network.")) << program->recentWords();
    press(xkey::returnKey);
    EXPECT_TRUE(saysThat("1 Not set up yet: ")) << program->recentWords();
}

TEST_F(UnlockProgramTest, selfCheckSucceedsUnlessInterrupted) {
    for (const bool isEnded : {false, true}) {
        StagedProgram check(loop, environment, {"--self-check"});
        ASSERT_TRUE(check.says(isEnded ? "ok  Camera permission: "
                                       : "ok  Camera: Rehearsal camera, set to 640 × 480; "))
            << check.recentWords();
        const int status = check.terminate();
        // When the signal is slow the check has finished.
        const bool isDone = !isEnded || check.hasSaid("ok  Camera: ");
        EXPECT_EQ(status, isDone ? EXIT_SUCCESS : EXIT_FAILURE) << check.recentWords();
    }
}

}  // namespace
}  // namespace marrowby
