// SPDX-License-Identifier: Apache-2.0
#include "Tests/Unlock/FakeComputer.h"
#include "Unlock/SelfCheck.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::Contains;
using testing::Each;
using testing::EndsWith;
using testing::StartsWith;

struct SelfCheckTest : testing::Test, FakeComputer {
    SelfCheckTest() {
        enrollmentCamera->answer = CaptureAuthorization::authorized;
        // A device may say anything of itself.
        enrollmentCamera->cameras = {{.description = {"desk", "Desk\x1b[31m camera"},
                                      .formats = {{640, 480, {{5, 30}}}, {1280, 720, {{5, 30}}}}}};
    }

    void run(bool hasPicture = true) {
        check = std::make_unique<SelfCheck>(
            selfCheckServices(), [this](const std::string& line) { lines.push_back(line); },
            [this](bool isAllThere) {
                ended.push_back(isAllThere);
                check.reset();
            });
        check->start();
        settle();
        mainThread.advance(TimeInterval(0.42));
        if (hasPicture) {
            for (int i = 0; i < 2; ++i)
                enrollmentCamera->deliver(std::make_shared<FakeSourceImage>(1280, 720));
        }
        settle();
        mainThread.advance(SelfCheck::longestWait);
        settle();
    }

    std::vector<std::string> lines;
    std::vector<bool> ended;
    std::unique_ptr<SelfCheck> check;
};

TEST_F(SelfCheckTest, saysOneSentenceOfEverythingAndLeavesNothing) {
    run();
    EXPECT_THAT(lines, Each(EndsWith(".")));
    EXPECT_THAT(lines,
                Contains("ok  Camera: Desk [31m camera, set to 1280 × 720 at 30 a second; first "
                         "picture of 1280 × 720 after 0.42 s."));
    EXPECT_THAT(lines, Contains("ok  Key store: a key was kept, read and removed."));
    EXPECT_THAT(lines, Contains("ok  Session: it is there."));
    EXPECT_EQ(ended.size(), 1U);
    EXPECT_FALSE(enrollmentCamera->isRunning());
    EXPECT_TRUE(owner.prompts.empty());
    EXPECT_TRUE(mainThread.timers().empty());
    EXPECT_FALSE(keyStore.key);
}

TEST_F(SelfCheckTest, saysWhatIsMissingAndAsksForNothing) {
    struct Case {
        const char* line;
        std::function<void()> breakIt;
    };
    const Case cases[] = {
        {"NO  Camera: Desk [31m camera, in a format of its own; no picture came within 10.00 s. "
         "Connect a camera, or end the program that uses it.",
         [this] { enrollmentCamera->camera("desk").isBusy = true; }},
        {"NO  Accessibility: not granted. Switch it on in System Settings › Privacy & Security › "
         "Accessibility.",
         [this] { keyEvents.trusted = false; }},
        {"NO  Session: there is no session to ask about. Start it in the session in front of you.",
         [this] { sessionInWords.reset(); }},
        {"NO  Key store: it gave another key back. Unlock your login keychain in Keychain Access.",
         [this] { keyStore.corruptsKey = true; }},
        {"NO  Owner’s check: No finger. Set a password for your account in System Settings.",
         [this] { owner.unavailable = "No finger"; }},
        {"-   Space above the lock screen: not found, so the island lies where this system lets "
         "it.",
         [this] { windowServer.hasSpaces = false; }},
        {"NO  Camera permission: not asked for yet. Switch it on in System Settings › Privacy & "
         "Security › Camera.",
         [this] { enrollmentCamera->answer = CaptureAuthorization::notDetermined; }},
    };
    for (const Case& one : cases) {
        lines.clear();
        one.breakIt();
        run(false);
        EXPECT_THAT(lines, Contains(one.line));
        EXPECT_THAT(lines, Each(EndsWith(".")));
    }
    EXPECT_THAT(ended, Each(false));
    EXPECT_EQ(ended.size(), std::size(cases));
    EXPECT_EQ(enrollmentCamera->answer, CaptureAuthorization::notDetermined);
}

}  // namespace
}  // namespace marrowby
