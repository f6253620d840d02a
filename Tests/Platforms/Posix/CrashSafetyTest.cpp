// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/Platform/AtomicFile.h"

#include <cerrno>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes oldContent(1000, 1);
const Bytes newContent(std::size_t{200} << 10, 2);

int save(const std::filesystem::path& file, const Bytes& bytes) {
    PosixFileSystem fileSystem;
    const auto saved = atomicfile::replace(fileSystem, file, bytes);
    return saved ? 0 : saved.error().code;
}

std::optional<Bytes> contentOf(const std::filesystem::path& file) {
    PosixFileSystem fileSystem;
    auto content = fileSystem.read(file, newContent.size());
    if (!content) return std::nullopt;
    return std::move(*content);
}

std::ptrdiff_t entriesOf(const std::filesystem::path& folder) {
    return std::distance(std::filesystem::directory_iterator(folder),
                         std::filesystem::directory_iterator());
}

/// Runs the work in a traced process that is killed at the given stop: one before and one after
/// every system call. False when the work ended earlier.
bool isKilledAt(int stop, const std::function<void()>& work) {
    const pid_t child = ::fork();
    if (child == 0) {
        ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        ::raise(SIGSTOP);
        work();
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    for (int i = 0; WIFSTOPPED(status); ++i) {
        if (i == stop) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            return true;
        }
        ::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
        ::waitpid(child, &status, 0);
    }
    EXPECT_TRUE(WIFEXITED(status));
    return false;
}

bool canTrace() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST(CrashSafety, aProcessKilledAtAnySystemCallLeavesOldOrNewContent) {
    if (!canTrace()) GTEST_SKIP() << "Skipped: this system does not allow ptrace.";
    for (const bool hasFile : {true, false}) {
        int points = 0;
        int olds = 0;
        for (bool isKilled = true; isKilled; ++points) {
            SCOPED_TRACE(points);
            const TemporaryFolder home;
            const auto file = home.path() / "a" / "b" / "file";
            if (hasFile) {
                ASSERT_EQ(save(file, oldContent), 0);
            }
            const std::optional<Bytes> before = contentOf(file);
            isKilled = isKilledAt(points, [&] { (void)save(file, newContent); });

            const auto after = contentOf(file);
            EXPECT_TRUE(after == newContent || (isKilled && after == before));
            olds += after == before ? 1 : 0;
            // The next save succeeds and removes leftovers.
            ASSERT_EQ(save(file, oldContent), 0);
            EXPECT_EQ(contentOf(file), oldContent);
            EXPECT_EQ(entriesOf(file.parent_path()), 1);
        }
        EXPECT_GT(olds, 10);
        EXPECT_GT(points - olds, 2);
    }
}

TEST(CrashSafety, aFullDiskKeepsTheOldContent) {
    const TemporaryFolder home;
    const auto file = home.path() / "file";
    ASSERT_EQ(save(file, oldContent), 0);
    // A file size limit acts like a full disk, and needs no root.
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = newContent.size() / 2, .rlim_max = limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_EQ(save(file, newContent), EFBIG);
    EXPECT_EQ(contentOf(file), oldContent);
    EXPECT_EQ(entriesOf(home.path()), 1);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, handler);
}

}  // namespace
}  // namespace marrowby
