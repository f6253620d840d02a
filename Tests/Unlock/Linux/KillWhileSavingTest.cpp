// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/JsonDefaultsStore.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/Unlock/FakeComputer.h"

#include <cstdlib>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

using testing::AnyOf;

/// An application on a real disk, and what it saved last.
class KillWhileSavingTest : public testing::Test, protected FakeComputer {
  protected:
    KillWhileSavingTest() {
        disk = &realFiles;
        store = &realSettings;
    }

    [[nodiscard]] UnlockModel::Resources realResources() const {
        UnlockModel::Resources all = resources();
        all.dataBase = folder.path();
        return all;
    }
    [[nodiscard]] static std::string nameOf(std::int64_t round) {
        return round < 0 ? "secret" : "secret " + std::to_string(round);
    }
    [[nodiscard]] static std::int64_t secondsOf(std::int64_t round) {
        return UnlockSettings::scanSecondsChoices[static_cast<std::size_t>(round % 4)];
    }
    /// Read through another vault with the same key.
    [[nodiscard]] std::string savedPassword() {
        Vault vault(
            keyStore, owner, [] { return true; },
            {.cipher = cipher, .mainThread = mainThread, .clock = mainThread, .didChange = {}});
        vault.unlock("look", [](const auto&) {});
        settle();
        const CredentialStore credentials(
            {realFiles, AppDataFolder::in(folder.path(), {}).passwordFile(),
             VaultPurpose::password},
            vault);
        return credentials
            .withPassword([](auto bytes) { return std::string(bytes.begin(), bytes.end()); })
            .value_or("unreadable");
    }
    void save(UnlockModel& model, const std::string& password) {
        const std::span bytes(reinterpret_cast<const std::uint8_t*>(password.data()),
                              password.size());
        bool isSaved = false;
        model.savePassword(SecretBytes::copyOf(bytes).value(),
                           [&](const auto& outcome) { isSaved = outcome.has_value(); });
        settle();
        ASSERT_TRUE(isSaved);
    }
    /// Saves forever, and reports each save.
    [[noreturn]] void saveForever(int reports) {
        JsonDefaultsStore own(realFiles, folder.path() / "settings.json");
        store = &own;
        // Secret pages are not inherited by a child process.
        UnlockModel model(platform(), realResources(), UnlockModel::Callbacks{});
        model.openVault([](const auto&) {});
        settle();
        for (std::int64_t round = 0;; ++round) {
            save(model, nameOf(round));
            model.setFaceEnabled(model.state().identities.front().id, round % 2 == 0,
                                 [](const auto&) {});
            settle();
            UnlockSettings changed = model.settings();
            changed.scanSeconds = secondsOf(round);
            model.apply(changed);
            if (::write(reports, &round, sizeof round) != sizeof round) std::abort();
        }
    }

    TemporaryFolder folder;
    PosixFileSystem realFiles;
    JsonDefaultsStore realSettings{realFiles, folder.path() / "settings.json"};
};

TEST_F(KillWhileSavingTest, losesNoSavedData) {
    auto model =
        std::make_unique<UnlockModel>(platform(), realResources(), UnlockModel::Callbacks{});
    model->captureFace([](const auto&) {});
    holdAllPoses();
    model->saveCapturedFace("Anna", std::nullopt, [](const auto&) {});
    settle();
    save(*model, "secret");
    ASSERT_TRUE(model->state().isEnrolled && model->state().hasPassword);
    model.reset();

    std::mt19937 chance(4711);
    for (int kill = 0; kill < 100; ++kill) {
        int pipe[2]{};
        ASSERT_EQ(::pipe(pipe), 0);
        const pid_t child = ::fork();
        if (child == 0) saveForever(pipe[1]);
        ::close(pipe[1]);
        std::int64_t last = -1;
        for (auto rounds = chance() % 4; rounds > 0; --rounds)
            ASSERT_EQ(::read(pipe[0], &last, sizeof last), ssize_t{sizeof last});
        // A random time into the next round.
        for (auto turns = chance() % 2000; turns > 0; --turns)
            (void)::getppid();
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(pipe[0], &last, sizeof last) == ssize_t{sizeof last}) {
        }
        ::close(pipe[0]);

        JsonDefaultsStore found(realFiles, folder.path() / "settings.json");
        store = &found;
        UnlockModel restarted(platform(), realResources(), UnlockModel::Callbacks{});
        bool isOpen = false;
        restarted.openVault([&](const auto& outcome) { isOpen = outcome.has_value(); });
        settle();
        ASSERT_TRUE(isOpen) << restarted.state().problem.value_or("");
        ASSERT_EQ(restarted.state().identities.size(), 1U);
        ASSERT_EQ(restarted.state().identities.front().samples.size(), 18U);
        ASSERT_THAT(savedPassword(), AnyOf(nameOf(last), nameOf(last + 1)));
        if (last >= 0) {
            ASSERT_THAT(restarted.settings().scanSeconds,
                        AnyOf(secondsOf(last), secondsOf(last + 1)));
        }
        save(restarted, "secret");
    }
}

}  // namespace
}  // namespace marrowby
