// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeFileSystem.h"
#include "UnlockCore/Platform/AtomicFile.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Bytes = FakeFileSystem::Bytes;
using Names = FakeFileSystem::Names;

const std::filesystem::path path = "/disk/data/folder/file";
const Bytes oldContent{1, 1, 1, 1};
const Bytes newContent{2, 2, 2, 2, 2, 2};

/// The content before the save, if there is a file.
using Start = std::optional<Bytes>;
const Start starts[] = {oldContent, std::nullopt};

void arrange(FakeFileSystem& fileSystem, const Start& start) {
    fileSystem.put("/disk/other", {});
    if (start) fileSystem.put(path, *start);
}

std::size_t callsOfASave(const Start& start) {
    FakeFileSystem fileSystem;
    arrange(fileSystem, start);
    EXPECT_TRUE(atomicfile::replace(fileSystem, path, newContent));
    EXPECT_EQ(fileSystem.content(path), newContent);
    fileSystem.losePower(Names::lost);
    EXPECT_EQ(fileSystem.content(path), newContent) << "a finished save is on the device";
    return fileSystem.calls();
}

TEST(AtomicFile, oneFailedCallLeavesOldOrNewContentAndNoTemporary) {
    for (const Start& start : starts) {
        const std::size_t calls = callsOfASave(start);
        for (std::size_t call = 0; call < calls; ++call) {
            SCOPED_TRACE(call);
            FakeFileSystem fileSystem;
            arrange(fileSystem, start);
            fileSystem.failCall(call);
            const auto saved = atomicfile::replace(fileSystem, path, newContent);
            ASSERT_FALSE(saved);
            EXPECT_EQ(saved.error(), FakeFileSystem::error());
            EXPECT_FALSE(fileSystem.exists(atomicfile::temporaryPath(path)));
            EXPECT_EQ(fileSystem.openFiles(), 0U);
            EXPECT_EQ(fileSystem.content(path), call + 1 == calls ? newContent : start);
        }
    }
}

TEST(AtomicFile, aCrashAtAnyPointLeavesOldOrNewContent) {
    for (const Start& start : starts) {
        const std::size_t calls = callsOfASave(start);
        for (std::size_t call = 0; call <= calls; ++call) {
            for (const Names names : {Names::lost, Names::kept}) {
                SCOPED_TRACE(call);
                FakeFileSystem fileSystem;
                arrange(fileSystem, start);
                fileSystem.failFrom(call);
                EXPECT_EQ(atomicfile::replace(fileSystem, path, newContent).has_value(),
                          call == calls);
                fileSystem.losePower(names);
                fileSystem.heal();
                EXPECT_TRUE(fileSystem.content(path) == newContent ||
                            fileSystem.content(path) == start);

                // A file left by the crash does not stop the next save.
                EXPECT_TRUE(atomicfile::replace(fileSystem, path, newContent));
                EXPECT_EQ(fileSystem.content(path), newContent);
                EXPECT_EQ(fileSystem.files().size(), 2U);
            }
        }
    }
}

}  // namespace
}  // namespace marrowby
