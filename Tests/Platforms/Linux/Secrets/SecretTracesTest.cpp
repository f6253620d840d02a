// SPDX-License-Identifier: Apache-2.0
#include "Tests/Platforms/Linux/MockServices.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "Tests/SecretTraces/Needle.h"

#include <cstdlib>
#include <filesystem>
#include <string>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

TEST(SecretTraces, areNeitherInMemoryNorInACoreNorOnDisk) {
    const auto bus = startBusForMocks();
    if (!bus) GTEST_SKIP() << noPrivateBus;
    const TemporaryFolder home;
    const auto keyring = startKeyring(*bus, home.path(), "the keyring's");
    if (!keyring) GTEST_SKIP() << noKeyringDaemon;

    const std::string log = home.path() / "log";
    const pid_t child = ::fork();
    if (child == 0) {
        const int output = ::open(log.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        ::dup2(output, STDOUT_FILENO);
        ::dup2(output, STDERR_FILENO);
        // A sanitizer would intercept the abort and disable the core dump.
        ::setenv("ASAN_OPTIONS", "handle_abort=0:disable_coredump=0:detect_leaks=0", 1);
        const rlimit unlimited{.rlim_cur = RLIM_INFINITY, .rlim_max = RLIM_INFINITY};
        ::setrlimit(RLIMIT_CORE, &unlimited);
        if (::chdir(home.path().c_str()) != 0) ::_exit(126);
        ::execl(MARROWBY_SECRET_TRACES_PROBE, "probe", bus->address().c_str(), home.path().c_str(),
                nullptr);
        ::_exit(127);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    const auto text = contentOf(log);
    ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT)
        << std::string(text.begin(), text.end());
    const auto masked = contentOf(home.path() / "masked-key");
    ASSERT_EQ(masked.size(), 32U);

    // The core, the log, the sealed file, the keyring.
    bool hasCore = false;
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home.path())) {
        if (!entry.is_regular_file()) continue;
        SCOPED_TRACE(entry.path());
        const auto bytes = contentOf(entry.path());
        ++files;
        for (const Needle& needle : {thePassword, thePasswordAsUTF16, keyNeedle(masked)})
            EXPECT_EQ(needle.countIn(bytes, bytes.size()), 0U);
        if (!entry.path().filename().string().starts_with("core")) continue;
        hasCore = true;
        EXPECT_GE(theControl.countIn(bytes, bytes.size()), 1U);
    }
    EXPECT_GE(files, 4U);
    if (!WCOREDUMP(status) || !hasCore)
        GTEST_SKIP() << "Skipped: this system writes no core files.";
}

}  // namespace
}  // namespace marrowby
