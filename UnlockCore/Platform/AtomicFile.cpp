// SPDX-License-Identifier: Apache-2.0
#include "UnlockCore/Platform/AtomicFile.h"

#include <string>
#include <utility>

namespace marrowby::atomicfile {

namespace {

using Result = std::expected<void, FileError>;

Result makeFolders(FileSystem& fileSystem, const std::filesystem::path& folder) {
    if (folder.empty() || fileSystem.exists(folder)) return {};
    const std::filesystem::path parent = folder.parent_path();
    if (parent == folder) return {};
    if (Result made = makeFolders(fileSystem, parent); !made) return made;
    if (Result made = fileSystem.makeFolder(folder); !made) return made;
    return fileSystem.flushFolder(parent.empty() ? "." : parent);
}

std::expected<FileSystem::File, FileError> createTemporary(FileSystem& fileSystem,
                                                           const std::filesystem::path& path) {
    auto file = fileSystem.createExclusively(path);
    // Left by a crash.
    if (!file && fileSystem.exists(path) && fileSystem.remove(path)) {
        file = fileSystem.createExclusively(path);
    }
    return file;
}

Result fill(FileSystem& fileSystem, FileSystem::File file, std::span<const std::uint8_t> bytes) {
    Result result = fileSystem.write(file, bytes);
    if (result) result = fileSystem.flush(file);
    fileSystem.close(file);
    return result;
}

}  // namespace

std::filesystem::path temporaryPath(const std::filesystem::path& path) {
    return path.parent_path() / ("." + path.filename().string() + ".new");
}

Result replace(FileSystem& fileSystem, const std::filesystem::path& path,
               std::span<const std::uint8_t> bytes) {
    const std::filesystem::path folder = path.parent_path();
    if (Result made = makeFolders(fileSystem, folder); !made) return made;

    const std::filesystem::path temporary = temporaryPath(path);
    const auto file = createTemporary(fileSystem, temporary);
    if (!file) return std::unexpected(file.error());

    Result result = fill(fileSystem, *file, bytes);
    // Before the rename, so that nothing but the last flush can fail after it.
    if (result) result = fileSystem.setPrivateMode(temporary);
    if (result) result = fileSystem.rename(temporary, path);
    if (!result) {
        // NOLINTNEXTLINE(bugprone-unused-return-value): the first error is reported.
        (void)fileSystem.remove(temporary);
        return result;
    }
    return fileSystem.flushFolder(folder.empty() ? "." : folder);
}

}  // namespace marrowby::atomicfile
