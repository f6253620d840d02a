#include "Rehearsal/FrameFolder.h"
#include "Tests/Fakes/SharedFolder.h"
#include "Tests/Rehearsal/SequenceOnDisk.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(FrameFolder, readsPicturesAndWhatIsKnownOfThem) {
    const SequenceOnDisk disk;
    disk.fill("AB");
    disk.write("truth.json", R"({"fps": 12.5, "made by": "us", "frames": [
        {"yaw": 0.25, "pitch": -0.125, "pose": "top-left", "person": 7}, {"attack": "phone"}]})");
    const auto folder = FrameFolder::load(disk.path());
    ASSERT_TRUE(folder.has_value()) << folder.error();
    EXPECT_EQ(folder->width(), 2);
    EXPECT_EQ(folder->height(), 1);
    EXPECT_EQ(folder->framesPerSecond(), 12.5);
    EXPECT_EQ(folder->frames(), (std::vector<FrameFolder::Truth>{
                                    {.yaw = 0.25, .pitch = -0.125, .pose = "top-left"}, {}}));
    const auto second = folder->picture(1);
    ASSERT_TRUE(second.has_value()) << second.error();
    EXPECT_EQ((*second)->bytes()[0], 'B');
}

TEST(FrameFolder, saysWhatIsMissingOrWrong) {
    const std::string frames = R"("frames": [{}, {}])";
    struct Case {
        std::string truth;
        std::string error;
    };
    const std::vector<Case> cases{
        {"{\"fps\": 15, ", "has a “truth.json” that isn’t a JSON object."},
        {"[15]", "has a “truth.json” that isn’t a JSON object."},
        {"{" + frames + "}", "has a “truth.json” without a usable frame rate (“fps”)."},
        {R"({"fps": "15", )" + frames + "}",
         "has a “truth.json” without a usable frame rate (“fps”)."},
        {R"({"fps": 0, )" + frames + "}",
         "has a “truth.json” without a usable frame rate (“fps”)."},
        {R"({"fps": 1e9, )" + frames + "}",
         "has a “truth.json” without a usable frame rate (“fps”)."},
        {R"({"fps": 15})", "has a “truth.json” without a list of “frames”."},
        {R"({"fps": 15, "frames": []})", "has a “truth.json” without a list of “frames”."},
        {R"({"fps": 15, "frames": [{}, 3]})",
         "has a “truth.json” that describes “0001.jpg” wrongly."},
        {R"({"fps": 15, "frames": [{"yaw": "left"}, {}]})",
         "has a “truth.json” that describes “0000.jpg” wrongly."},
        {R"({"fps": 15, "frames": [{}, {"pose": 2}]})",
         "has a “truth.json” that describes “0001.jpg” wrongly."},
        {R"({"fps": 15, "frames": [{}, {}, {}]})", "lacks the picture “0002.jpg”."},
    };
    for (const Case& each : cases) {
        const SequenceOnDisk disk;
        disk.fill("AB");
        disk.write("truth.json", each.truth);
        const auto folder = FrameFolder::load(disk.path());
        ASSERT_FALSE(folder.has_value()) << each.truth;
        EXPECT_EQ(folder.error(), "The sequence “look” " + each.error) << each.truth;
    }

    const SequenceOnDisk disk;
    EXPECT_EQ(FrameFolder::load(disk.path() / "").error(),
              "The sequence “look” has no “truth.json”.");
    EXPECT_EQ(FrameFolder::load(disk.path() / "walk").error(), "The sequence “walk” isn’t there.");
    disk.fill("A");
    disk.write("0000.jpg", "no picture at all");
    EXPECT_NE(FrameFolder::load(disk.path()).error().find("“0000.jpg”"), std::string::npos);
}

TEST(FrameFolder, readsTheRenderedPeople) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    const auto look = FrameFolder::load(*shared / "media" / "owner-look");
    ASSERT_TRUE(look.has_value()) << look.error();
    EXPECT_EQ(look->width(), 480);
    EXPECT_EQ(look->height(), 360);
    EXPECT_EQ(look->framesPerSecond(), 15);
    EXPECT_EQ(look->frames().size(), 45U);
    EXPECT_TRUE(look->picture(44).has_value());
    const auto phone = FrameFolder::load(*shared / "media" / "phone-photo-look");
    ASSERT_TRUE(phone.has_value()) << phone.error();
    EXPECT_EQ(phone->frames().front(), FrameFolder::Truth{});
}

}  // namespace
}  // namespace marrowby
