// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Posix/PosixFileSystem.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/Platform/AtomicFile.h"

#include <cerrno>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace marrowby {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t large = 1000;
const Bytes content{1, 2, 3};

mode_t modeOf(const std::filesystem::path& path) {
    struct stat status{};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return status.st_mode & 07777;
}

struct PosixFileSystemTest : ::testing::Test {
    TemporaryFolder folder;
    PosixFileSystem fileSystem;
    std::filesystem::path file = folder.path() / "a" / "b" / "file";

    void save(const Bytes& bytes) {
        const auto saved = atomicfile::replace(fileSystem, file, bytes);
        ASSERT_TRUE(saved) << saved.error().message;
    }
    int errorOfReading(const std::filesystem::path& path, std::size_t limit = large) {
        const auto read = fileSystem.read(path, limit);
        return read ? 0 : read.error().code;
    }
};

TEST_F(PosixFileSystemTest, savesWithMode0600WhateverTheUmask) {
    const mode_t mask = ::umask(0);
    save(content);
    ::umask(mask);
    EXPECT_EQ(fileSystem.read(file, large), content);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(modeOf(file.parent_path()), 0700U);
    EXPECT_EQ(modeOf(file.parent_path().parent_path()), 0700U);

    ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
    const Bytes megabytes(std::size_t{3} << 20, 7);
    save(megabytes);
    EXPECT_EQ(fileSystem.read(file, megabytes.size()), megabytes);
    EXPECT_EQ(modeOf(file), 0600U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()),
                            std::filesystem::directory_iterator()),
              1);
}

TEST_F(PosixFileSystemTest, replacesALinkAndNeverFollowsIt) {
    save(content);
    const auto target = folder.path() / "target";
    std::filesystem::rename(file, target);
    std::filesystem::create_symlink(target, file);
    EXPECT_EQ(errorOfReading(file), ELOOP);
    EXPECT_FALSE(fileSystem.setPrivateMode(file));
    save({9});
    EXPECT_EQ(fileSystem.read(file, large), Bytes{9});
    EXPECT_EQ(fileSystem.read(target, large), content);

    // Nor one in place of the temporary file.
    std::filesystem::create_symlink(target, atomicfile::temporaryPath(file));
    EXPECT_FALSE(fileSystem.createExclusively(atomicfile::temporaryPath(file)));
    save({8});
    EXPECT_EQ(fileSystem.read(target, large), content);

    std::filesystem::remove(file);
    std::filesystem::create_symlink("nowhere", file);
    EXPECT_TRUE(fileSystem.exists(file));
    EXPECT_TRUE(fileSystem.remove(file));
    EXPECT_FALSE(fileSystem.exists(file));
}

TEST_F(PosixFileSystemTest, reportsErrors) {
    save(content);
    EXPECT_EQ(errorOfReading(folder.path() / "none"), ENOENT);
    EXPECT_EQ(errorOfReading(folder.path()), EISDIR);
    EXPECT_EQ(errorOfReading(file, content.size()), 0);
    EXPECT_EQ(errorOfReading(file, content.size() - 1), EFBIG);
    const auto pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(errorOfReading(pipe), EINVAL);

    EXPECT_FALSE(fileSystem.exists(file / "below a file"));
    EXPECT_TRUE(fileSystem.exists(folder.path() / std::string(300, 'x')))
        << "unknown counts as existing";
    EXPECT_EQ(fileSystem.makeFolder(file).error().code, EEXIST);
    EXPECT_TRUE(fileSystem.makeFolder(file.parent_path()));
    EXPECT_FALSE(fileSystem.flush({-1}));
    EXPECT_FALSE(fileSystem.flushFolder(file));
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    EXPECT_EQ(fileSystem.write({full}, content).error().code, ENOSPC);
    fileSystem.close({full});
}

}  // namespace
}  // namespace marrowby
