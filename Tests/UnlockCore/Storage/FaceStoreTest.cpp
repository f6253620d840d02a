// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/VaultFixture.h"
#include "Unlock/macOS/MacWords.h"
#include "UnlockCore/Storage/FaceStore.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

const std::vector<FaceSample> oneSample{
    {.embedding = {1.0F}, .pose = "center", .capturedAt = Date(), .quality = {}}};
const std::vector<FaceSample> twoSamples(2, oneSample[0]);

struct Bench : VaultFixture {
    FaceStore store = makeStore();

    Bench() { (void)unlock(); }
    FaceStore makeStore() { return {facesFile, *vault, cipher, mainThread, macWords}; }
    UUID save(std::string_view name) {
        EXPECT_TRUE(store.saveIdentity(oneSample, name, "m-1", 1));
        return store.identities().back().id;
    }
    [[nodiscard]] std::vector<FaceIdentity> onDisk() {
        FaceStore other = makeStore();
        EXPECT_TRUE(other.load());
        return other.identities();
    }
    [[nodiscard]] auto file() const { return fileSystem.content(folder.facesFile()); }
};

TEST(FaceStore, keepsWhatItSaves) {
    Bench bench;
    ASSERT_TRUE(bench.store.load());
    EXPECT_TRUE(bench.store.isLoaded());
    EXPECT_EQ(problemOf(bench.store.saveIdentity({}, "Ann", "m-1", 1)),
              FaceStoreError(FaceStoreError::EmptyEnrolment{}));
    const UUID ann = bench.save(" Ann\n");
    const UUID unnamed = bench.save(" \t ");
    EXPECT_NE(ann, unnamed);
    EXPECT_EQ(bench.store.identities()[0], (FaceIdentity{.id = ann,
                                                         .name = "Ann",
                                                         .samples = oneSample,
                                                         .modelIdentifier = "m-1",
                                                         .dimension = 1,
                                                         .createdAt = bench.mainThread.now(),
                                                         .isEnabled = true}));
    EXPECT_EQ(bench.store.identities()[1].name, "Face");
    EXPECT_TRUE(bench.store.setEnabled(false, ann));
    EXPECT_TRUE(bench.store.rename(unnamed, " Bo "));
    EXPECT_TRUE(bench.store.rename(unnamed, " \n"));
    ASSERT_EQ(bench.store.enabledIdentities().size(), 1U);
    EXPECT_EQ(bench.store.enabledIdentities()[0].name, "Bo");
    EXPECT_EQ(bench.onDisk(), bench.store.identities());

    EXPECT_TRUE(bench.store.remove(ann));
    EXPECT_TRUE(bench.store.remove(unnamed));
    EXPECT_TRUE(bench.onDisk().empty());
}

TEST(FaceStore, refreshesAnIdentityInItsPlace) {
    Bench bench;
    ASSERT_TRUE(bench.store.load());
    const UUID ann = bench.save("Ann");
    (void)bench.save("Bo");
    ASSERT_TRUE(bench.store.setEnabled(false, ann));
    FaceIdentity expected = bench.store.identities()[0];
    bench.mainThread.advance(TimeInterval(10));

    expected.samples = twoSamples;
    expected.modelIdentifier = "m-2";
    expected.dimension = 3;
    EXPECT_TRUE(bench.store.saveIdentity(twoSamples, "  ", "m-2", 3, ann));
    EXPECT_EQ(bench.store.identities()[0], expected);
    EXPECT_EQ(bench.store.identities().size(), 2U);

    EXPECT_TRUE(bench.store.saveIdentity(oneSample, "Cy", "m-2", 3, UUID()));
    EXPECT_EQ(bench.store.identities().size(), 3U);
}

TEST(FaceStore, refusesEveryChangeUntilItHasRead) {
    Bench bench;
    const auto problems = [&] {
        return std::vector{problemOf(bench.store.saveIdentity(oneSample, "Ann", "m-1", 1)),
                           problemOf(bench.store.setEnabled(true, UUID())),
                           problemOf(bench.store.rename(UUID(), "Ann")),
                           problemOf(bench.store.remove(UUID()))};
    };
    const StorageError notLoaded = FaceStoreError(FaceStoreError::NotLoaded{});
    EXPECT_EQ(problems(), std::vector(4, std::optional(notLoaded)));

    struct Case {
        const char* name;
        FakeFileSystem::Bytes file;
        std::string reason;
    };
    const auto sealed = [&](const char* text, VaultPurpose purpose) {
        return bench.vault->seal(bytesOf(text), purpose).value();
    };
    FakeFileSystem::Bytes foreign = sealed("[]", VaultPurpose::faces);
    foreign[0] = 2;
    const std::string damaged = "Couldn’t decrypt: the saved data may be damaged.";
    const Case cases[] = {
        {"empty", {}, damaged},
        {"other purpose", sealed("[]", VaultPurpose::password), damaged},
        {"other version", foreign, "The saved data is in a format this version doesn’t know."},
        {"other text", sealed("{}", VaultPurpose::faces),
         "The saved face isn’t in the expected format: it isn’t a list."},
        {"absurd size", FakeFileSystem::Bytes(std::size_t{5} << 20, 1), "File too large"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        bench.fileSystem.put(bench.folder.facesFile(), test.file);
        const StorageError unreadable = FaceStoreError(FaceStoreError::Unreadable{test.reason});
        EXPECT_EQ(problemOf(bench.store.load()), unreadable);
        EXPECT_FALSE(bench.store.isLoaded());
        EXPECT_EQ(problems(), std::vector(4, std::optional(unreadable)));
        EXPECT_EQ(bench.file(), test.file);
    }
    EXPECT_TRUE(bench.store.removeAll());
    EXPECT_FALSE(bench.file());
    EXPECT_FALSE(bench.store.loadFailure());
    (void)bench.save("Ann");
}

TEST(FaceStore, aLockedVaultChangesNothing) {
    Bench bench;
    ASSERT_TRUE(bench.store.load());
    (void)bench.save("Ann");
    const auto identities = bench.store.identities();
    bench.vault->lock();
    EXPECT_EQ(problemOf(bench.store.load()), VaultError::locked);
    EXPECT_EQ(problemOf(bench.store.saveIdentity(oneSample, "Bo", "m-1", 1)), VaultError::locked);
    EXPECT_EQ(bench.store.identities(), identities);
}

TEST(FaceStore, aCrashAtAnyPointLeavesTheOldOrTheNewFaces) {
    bool isOver = false;
    for (std::size_t call = 0; !isOver; ++call) {
        for (const auto names : {FakeFileSystem::Names::lost, FakeFileSystem::Names::kept}) {
            SCOPED_TRACE(call);
            Bench bench;
            ASSERT_TRUE(bench.store.load());
            (void)bench.save("Ann");
            const auto before = bench.store.identities();
            bench.fileSystem.failFrom(call);
            isOver = bench.store.saveIdentity(oneSample, "Bo", "m-1", 1).has_value();
            EXPECT_EQ(isOver, bench.store.identities() != before);
            bench.fileSystem.losePower(names);
            bench.fileSystem.heal();

            const auto after = bench.onDisk();
            EXPECT_TRUE(isOver ? after == bench.store.identities()
                               : after == before || after.size() == before.size() + 1);
            ASSERT_LT(call, 20U);
        }
    }
}

}  // namespace
}  // namespace marrowby
