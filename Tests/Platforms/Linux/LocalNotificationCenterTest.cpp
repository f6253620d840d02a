#include "Platforms/Linux/LocalNotificationCenter.h"
#include "Tests/Fakes/FakeMainThread.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct LocalNotificationCenterTest : testing::Test {
    FakeMainThread mainThread;
    std::unique_ptr<LocalNotificationCenter> center =
        std::make_unique<LocalNotificationCenter>(mainThread);
    std::vector<std::string> heard;

    NotificationCenter::Token listen(const std::string& name, const std::string& note) {
        return center->observe(name, [this, note] { heard.push_back(note); });
    }
};

TEST_F(LocalNotificationCenterTest, callsNobodyWhoLeftOrCameLater) {
    const auto gone = listen("wake", "gone");
    center->post("wake");
    (void)listen("wake", "late");
    center->remove(gone);
    center->remove(gone);
    center->remove({.value = 1000});
    mainThread.runPosted();
    EXPECT_THAT(heard, IsEmpty());
    center->post("wake");
    mainThread.runPosted();
    EXPECT_THAT(heard, ElementsAre("late"));
}

TEST_F(LocalNotificationCenterTest, toleratesChangesFromWithinAHandler) {
    NotificationCenter::Token second;
    NotificationCenter::Token first;
    first = center->observe("wake", [&] {
        heard.emplace_back("first");
        center->remove(first);
        center->remove(second);
        (void)listen("wake", "new");
    });
    second = listen("wake", "second");
    center->post("wake");
    mainThread.runPosted();
    EXPECT_THAT(heard, ElementsAre("first"));

    (void)center->observe("end", [this] { center.reset(); });
    (void)listen("end", "after the end");
    center->post("end");
    center->post("wake");
    mainThread.runPosted();
    EXPECT_THAT(heard, ElementsAre("first"));
}

TEST_F(LocalNotificationCenterTest, takesPostsFromManyThreadsWhileItIsUsed) {
    std::atomic<int> calls = 0;
    std::vector<std::thread> posters;
    const auto token = center->observe("wake", [&] { ++calls; });
    const auto postOften = [this] {
        for (int i = 0; i < 100; ++i)
            center->post("wake");
    };
    posters.reserve(4);
    for (int poster = 0; poster < 4; ++poster)
        posters.emplace_back(postOften);
    for (int i = 0; i < 100; ++i) {
        center->remove(listen("wake", "brief"));
        mainThread.runPosted();
    }
    for (auto& poster : posters)
        poster.join();
    mainThread.runPosted();
    EXPECT_EQ(calls, 400);
    center->remove(token);
}

}  // namespace
}  // namespace marrowby
