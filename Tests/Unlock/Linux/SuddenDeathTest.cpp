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
class SuddenDeathTest : public testing::Test, protected FakeComputer {
  protected:
    SuddenDeathTest() {
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
    /// As another application with the key would find it.
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
    /// Saves one thing after the other, and tells of each; never returns.
    [[noreturn]] void saveForever(int told) {
        JsonDefaultsStore own(realFiles, folder.path() / "settings.json");
        store = &own;
        // Secret pages don’t come along into a child.
        UnlockModel model(platform(), realResources(), UnlockModel::Callbacks{});
        model.openVault([](const auto&) {});
        settle();
        for (std::int64_t round = 0;; ++round) {
            save(model, nameOf(round));
            model.setLookEnabled(model.state().identities.front().id, round % 2 == 0,
                                 [](const auto&) {});
            settle();
            UnlockSettings changed = model.settings();
            changed.scanSeconds = secondsOf(round);
            model.apply(changed);
            if (::write(told, &round, sizeof round) != sizeof round) std::abort();
        }
    }

    TemporaryFolder folder;
    PosixFileSystem realFiles;
    JsonDefaultsStore realSettings{realFiles, folder.path() / "settings.json"};
};

TEST_F(SuddenDeathTest, losesNothingThatWasSaved) {
    auto model =
        std::make_unique<UnlockModel>(platform(), realResources(), UnlockModel::Callbacks{});
    model->captureLook([](const auto&) {});
    holdAllPoses();
    model->saveCapturedLook("Anna", [](const auto&) {});
    settle();
    save(*model, "secret");
    ASSERT_TRUE(model->state().isEnrolled && model->state().hasPassword);
    model.reset();

    std::mt19937 chance(4711);
    for (int death = 0; death < 100; ++death) {
        int told[2];
        ASSERT_EQ(::pipe(told), 0);
        const pid_t child = ::fork();
        if (child == 0) saveForever(told[1]);
        ::close(told[1]);
        std::int64_t last = -1;
        for (auto reports = chance() % 4; reports > 0; --reports)
            ASSERT_EQ(::read(told[0], &last, sizeof last), ssize_t{sizeof last});
        // Some way into the next round.
        for (auto turns = chance() % 2000; turns > 0; --turns)
            (void)::getppid();
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(told[0], &last, sizeof last) == ssize_t{sizeof last}) {
        }
        ::close(told[0]);

        JsonDefaultsStore found(realFiles, folder.path() / "settings.json");
        store = &found;
        UnlockModel survivor(platform(), realResources(), UnlockModel::Callbacks{});
        bool isOpen = false;
        survivor.openVault([&](const auto& outcome) { isOpen = outcome.has_value(); });
        settle();
        ASSERT_TRUE(isOpen) << survivor.state().problem.value_or("");
        ASSERT_EQ(survivor.state().identities.size(), 1U);
        ASSERT_EQ(survivor.state().identities.front().samples.size(), 18U);
        ASSERT_THAT(savedPassword(), AnyOf(nameOf(last), nameOf(last + 1)));
        if (last >= 0) {
            ASSERT_THAT(survivor.settings().scanSeconds,
                        AnyOf(secondsOf(last), secondsOf(last + 1)));
        }
        save(survivor, "secret");
    }
}

}  // namespace
}  // namespace marrowby
