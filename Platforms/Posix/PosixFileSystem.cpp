// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Posix/PosixFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

namespace marrowby {

namespace {

constexpr mode_t privateFolder = 0700;
constexpr mode_t privateFile = 0600;
constexpr std::size_t readChunk = std::size_t{64} << 10;

std::unexpected<FileError> failure(int code) {
    return std::unexpected<FileError>(
        {.code = code, .message = std::generic_category().message(code)});
}

std::expected<void, FileError> outcome(int result) {
    if (result != 0) return failure(errno);
    return {};
}

/// Retries on EINTR.
template <typename Call>
auto retried(const Call& call) {
    auto result = call();
    while (result == -1 && errno == EINTR)
        result = call();
    return result;
}

/// Flushes to the device: on macOS by F_FULLFSYNC, which not every disk supports.
int flushed(int descriptor) {
#ifdef F_FULLFSYNC
    if (retried([&] { return ::fcntl(descriptor, F_FULLFSYNC); }) != -1) return 0;
#endif
    return retried([&] { return ::fsync(descriptor); });
}

class Descriptor {
  public:
    Descriptor(const std::filesystem::path& path, int flags, mode_t mode = 0)
        : value_(retried([&] { return ::open(path.c_str(), flags | O_CLOEXEC, mode); })) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (value_ >= 0) ::close(value_);
    }
    [[nodiscard]] int get() const { return value_; }
    [[nodiscard]] bool isOpen() const { return value_ >= 0; }

  private:
    int value_;
};

}  // namespace

bool PosixFileSystem::exists(const std::filesystem::path& path) const {
    struct stat status{};
    if (::lstat(path.c_str(), &status) == 0) return true;
    return errno != ENOENT && errno != ENOTDIR;
}

std::expected<std::vector<std::uint8_t>, FileError> PosixFileSystem::read(
    const std::filesystem::path& path, std::size_t limit) {
    // O_NONBLOCK: opening a FIFO must not block.
    const Descriptor file(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file.isOpen()) return failure(errno);
    struct stat status{};
    if (::fstat(file.get(), &status) != 0) return failure(errno);
    if (S_ISDIR(status.st_mode)) return failure(EISDIR);
    if (!S_ISREG(status.st_mode)) return failure(EINVAL);

    std::vector<std::uint8_t> bytes;
    std::size_t count = 0;
    while (true) {
        // One byte above the limit detects a larger file; it may be growing.
        bytes.resize(std::min(count + readChunk, limit) + 1);
        const ssize_t got =
            retried([&] { return ::read(file.get(), bytes.data() + count, bytes.size() - count); });
        if (got < 0) return failure(errno);
        if (got == 0) break;
        count += static_cast<std::size_t>(got);
        if (count > limit) return failure(EFBIG);
    }
    bytes.resize(count);
    return bytes;
}

std::expected<void, FileError> PosixFileSystem::makeFolder(const std::filesystem::path& path) {
    if (::mkdir(path.c_str(), privateFolder) == 0) return {};
    const int code = errno;
    struct stat status{};
    // A symbolic link to a folder is accepted.
    if (code == EEXIST && ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) return {};
    return failure(code);
}

std::expected<FileSystem::File, FileError> PosixFileSystem::createExclusively(
    const std::filesystem::path& path) {
    const int file = retried([&] {
        return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC,
                      privateFile);
    });
    if (file < 0) return failure(errno);
    return File{file};
}

std::expected<void, FileError> PosixFileSystem::write(File file,
                                                      std::span<const std::uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written =
            retried([&] { return ::write(file.handle, bytes.data(), bytes.size()); });
        if (written < 0) return failure(errno);
        // Regular files never write 0 bytes without an error.
        if (written == 0) return failure(EIO);
        bytes = bytes.subspan(static_cast<std::size_t>(written));
    }
    return {};
}

std::expected<void, FileError> PosixFileSystem::flush(File file) {
    return outcome(flushed(file.handle));
}

void PosixFileSystem::close(File file) {
    // close() frees the descriptor even on EINTR: no retry.
    ::close(file.handle);
}

std::expected<void, FileError> PosixFileSystem::setPrivateMode(const std::filesystem::path& path) {
    const Descriptor file(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
    if (!file.isOpen()) return failure(errno);
    return outcome(::fchmod(file.get(), privateFile));
}

std::expected<void, FileError> PosixFileSystem::rename(const std::filesystem::path& from,
                                                       const std::filesystem::path& to) {
    return outcome(::rename(from.c_str(), to.c_str()));
}

std::expected<void, FileError> PosixFileSystem::flushFolder(const std::filesystem::path& path) {
    const Descriptor folder(path, O_RDONLY | O_DIRECTORY);
    if (!folder.isOpen()) return failure(errno);
    return outcome(flushed(folder.get()));
}

std::expected<void, FileError> PosixFileSystem::remove(const std::filesystem::path& path) {
    return outcome(::unlink(path.c_str()));
}

}  // namespace marrowby
