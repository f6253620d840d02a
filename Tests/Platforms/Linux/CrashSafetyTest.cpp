#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/Platform/AtomicFile.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;

const Bytes oldContent(1000, 1);
const Bytes newContent(std::size_t{200} << 10, 2);

/// The error's number, 0 for none.
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

/// Runs the work in a process that is killed at its stop of that number; every system call has one
/// before and one after it. False when it ended before.
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
    if (!canTrace()) GTEST_SKIP() << "Skipped: this system lets nobody trace.";
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
            // The next save does not stumble over what was left, and leaves nothing of it.
            ASSERT_EQ(save(file, oldContent), 0);
            EXPECT_EQ(contentOf(file), oldContent);
            EXPECT_EQ(entriesOf(file.parent_path()), 1);
        }
        EXPECT_GT(olds, 10);
        EXPECT_GT(points - olds, 2);
        RecordProperty(hasFile ? "pointsReplacing" : "pointsCreating", points - 1);
    }
}

/// Rights do not hold for root, who becomes nobody meanwhile.
class AsNobody {
  public:
    AsNobody() {
        if (::geteuid() == 0) {
            EXPECT_EQ(::seteuid(nobody), 0);
        }
    }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;
    ~AsNobody() {
        if (::getuid() == 0) {
            EXPECT_EQ(::seteuid(0), 0);
        }
    }
    static constexpr uid_t nobody = 65534;
};

void giveToNobody(const std::filesystem::path& path) {
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(path.c_str(), AsNobody::nobody, AsNobody::nobody), 0);
    }
}

struct CrashSafetyTest : testing::Test {
    TemporaryFolder home;
    std::filesystem::path folder = home.path() / "data";
    std::filesystem::path file = folder / "file";

    void SetUp() override {
        ASSERT_EQ(save(file, oldContent), 0);
        for (const auto& path : {home.path(), folder, file})
            giveToNobody(path);
    }
    /// A save fails so, and has changed nothing.
    void expectRefusal(int error) {
        const auto before = contentOf(file);
        const auto entries = entriesOf(folder);
        {
            const AsNobody nobody;
            EXPECT_EQ(save(file, newContent), error);
        }
        EXPECT_EQ(contentOf(file), before);
        EXPECT_EQ(entriesOf(folder), entries);
    }
};

TEST_F(CrashSafetyTest, aFolderThatCannotBeWrittenToKeepsTheOldContent) {
    ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
    expectRefusal(EACCES);
    ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);

    if (::geteuid() == 0) {
        // Somebody else's folder; then somebody else's file in one's own, which is replaced.
        ASSERT_EQ(::chown(folder.c_str(), 0, 0), 0);
        ASSERT_EQ(::chmod(folder.c_str(), 0755), 0);
        expectRefusal(EACCES);
        giveToNobody(folder);
        ASSERT_EQ(::chown(file.c_str(), 0, 0), 0);
        const AsNobody nobody;
        EXPECT_EQ(contentOf(file), std::nullopt);
        EXPECT_EQ(save(file, newContent), 0);
        EXPECT_EQ(contentOf(file), newContent);
    }
}

TEST_F(CrashSafetyTest, aFolderThatVanishedIsMadeAgain) {
    std::filesystem::remove_all(folder);
    {
        const AsNobody nobody;
        EXPECT_EQ(save(file, newContent), 0);
        EXPECT_EQ(contentOf(file), newContent);
    }
    std::filesystem::remove_all(folder);
    ASSERT_EQ(::chmod(home.path().c_str(), 0500), 0);
    {
        const AsNobody nobody;
        EXPECT_EQ(save(file, newContent), EACCES);
    }
    ASSERT_EQ(::chmod(home.path().c_str(), 0700), 0);
    ASSERT_EQ(save(folder, oldContent), 0);
    EXPECT_EQ(save(file, newContent), ENOTDIR) << "a file in its place";
    EXPECT_EQ(contentOf(folder), oldContent);
}

TEST_F(CrashSafetyTest, aFullDiskKeepsTheOldContent) {
    // The process's own limit is as good as a full disk, and any user's to set.
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = newContent.size() / 2, .rlim_max = limit.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    expectRefusal(EFBIG);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    ::signal(SIGXFSZ, handler);
}

/// In a view of the mounts that is this process's own; whoever is not root becomes it in there.
bool mayMount() {
    const uid_t user = ::geteuid();
    if (user == 0) return ::unshare(CLONE_NEWNS) == 0;
    const gid_t group = ::getegid();
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
    return ::geteuid() == 0;
}

TEST_F(CrashSafetyTest, aFullFileSystemKeepsTheOldContent) {
    constexpr int cannotMount = 99;
    const pid_t child = ::fork();
    if (child == 0) {
        const bool isMounted = mayMount() &&
                               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                               ::mount("test", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
        if (!isMounted) ::_exit(cannotMount);
        const bool isAsItShouldBe =
            save(file, oldContent) == 0 && save(file, newContent) == ENOSPC &&
            contentOf(file) == oldContent && entriesOf(folder) == 1 && save(file, {3}) == 0;
        ::_exit(isAsItShouldBe ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status));
    if (WEXITSTATUS(status) == cannotMount)
        GTEST_SKIP() << "Skipped: this system lets nobody mount.";
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace marrowby
