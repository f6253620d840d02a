// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Measuring/Proportion.h"
#include "Simulation/Measuring/Report.h"
#include "Simulation/Measuring/TakeFolders.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(Proportion, hasAnExactInterval) {
    struct Case {
        std::int64_t count;
        std::int64_t total;
        double low;
        double high;
    };
    // From tables of the beta distribution.
    for (const Case& c :
         {Case{0, 150, 0, 0.02429}, Case{1, 20, 0.00127, 0.24873}, Case{8, 10, 0.44390, 0.97479},
          Case{5, 5, 0.47818, 1}, Case{0, 0, 0, 1}}) {
        const auto [low, high] = Proportion{c.count, c.total}.interval();
        EXPECT_NEAR(low, c.low, 1e-5) << c.count << " of " << c.total;
        EXPECT_NEAR(high, c.high, 1e-5) << c.count << " of " << c.total;
    }
}

TakeResult result(Take::Purpose purpose, const std::string& attack, bool opened,
                  LivenessDecision decision) {
    TakeResult take;
    take.label.purpose = purpose;
    take.label.attack = attack;
    take.label.person = "ann";
    take.label.name = "a, \"b\"";
    take.isOpened = opened;
    take.decision = decision;
    if (opened) take.timeToOpen = TimeInterval(0.5);
    take.likeness = {{"ann", {0.9F, opened}}, {"bob", {0.6F, true}}, {"cid", {0.2F, false}}};
    return take;
}

TEST(Report, countsByKind) {
    const std::vector results{
        result(Take::Purpose::attack, "phone", false, LivenessDecision::Denied{LivenessCue::moire}),
        result(Take::Purpose::attack, "phone", true, LivenessDecision::Confirmed{}),
        result(Take::Purpose::genuine, "", true, LivenessDecision::Confirmed{}),
        result(Take::Purpose::genuine, "", false,
               LivenessDecision::Waiting{LivenessNeeds::realFace})};
    std::ostringstream text;
    writeReport(text, results);
    for (const char* expected :
         {"phone                       1 of 2       50.0 %   1.3 % to 98.7 %",
          "phone                    confirmed 1 denied:moire 1",
          "refused                     1 of 2  ", "    waiting 1: a, \"b\"",
          "opened within 2 s           1 of 2  ", "opened after the first face in 0.50 s (median)",
          "false match                 2 of 4  ", "false non-match             1 of 2  "}) {
        EXPECT_NE(text.str().find(expected), std::string::npos) << expected << "\n" << text.str();
    }
    std::ostringstream csv;
    writeCsv(csv,
             std::vector{TrialResults{.trial = trials(LivenessMode::standard, std::nullopt).front(),
                                      .results = results}});
    EXPECT_NE(
        csv.str().find(
            "\nstandard,attack,phone,ann,\"a, \"\"b\"\"\",0,0,denied:moire,0,,,,,,,,,0.9,0.6\n"),
        std::string::npos)
        << csv.str();
}

TEST(TakeFolders, readLabelsFromPaths) {
    const TemporaryFolder folder;
    const auto put = [&](const std::string& path, const std::string& content) {
        const auto file = folder.path() / path;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << content;
    };
    EXPECT_FALSE(takesBelow(folder.path() / "none", 30));
    EXPECT_FALSE(takesBelow(folder.path(), 30));
    put("attack/phone/ann/1/0001.png", "");
    put("attack/phone/ann/1/0000.jpg", "");
    put("attack/phone/ann/1/truth.json", R"({"fps": 15})");
    put("enrol/ann/0000.jpg", "");
    put("enrol/ann/notes.txt", "");
    put("genuine/bob/monday/0000.jpg", "no picture");
    const auto takes = takesBelow(folder.path(), 25);
    ASSERT_TRUE(takes);
    ASSERT_EQ(takes->size(), 3U);
    const auto& [attack, enrolment, genuine] = std::tie(takes->at(0), takes->at(1), takes->at(2));
    EXPECT_EQ(attack.label.purpose, Take::Purpose::attack);
    EXPECT_EQ(attack.label.attack + " " + attack.label.person, "phone ann");
    EXPECT_EQ(attack.framesPerSecond, 15);
    EXPECT_EQ(attack.pictureCount, 2U);
    EXPECT_EQ(enrolment.label.purpose, Take::Purpose::enrolment);
    EXPECT_EQ(genuine.label.person, "bob");
    EXPECT_EQ(genuine.framesPerSecond, 25);
    EXPECT_FALSE(genuine.picture(0));
    put("stray/0000.jpg", "");
    EXPECT_FALSE(takesBelow(folder.path(), 30));
}

}  // namespace
}  // namespace marrowby
