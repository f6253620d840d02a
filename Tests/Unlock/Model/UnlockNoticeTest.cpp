// SPDX-License-Identifier: Apache-2.0
#include "Tests/Fakes/FakeDesktopNotices.h"
#include "Tests/Fakes/FakeSessionUnlocking.h"
#include "Unlock/Model/UnlockNotice.h"

#include <optional>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct UnlockNoticeTest : testing::Test {
    FakeDesktopNotices notices;
    FakeSessionUnlocking session;
    std::optional<UnlockNotice> notice{std::in_place, notices, session};

    /// As the engine logs and the model publishes it.
    void log(std::string_view event, std::string name = {}) {
        notice->note({.event = event, .sentence = {}, .name = std::move(name)});
    }
    void lock() {
        log(logevent::locked);
        notice->update(true);
    }
    void unlockFor(const char* name) {
        lock();
        log(logevent::recognised, name);
        notice->update(true);
        log(logevent::unlocked);
        notice->update(true);
        EXPECT_FALSE(notices.shown) << "still locked";
        notice->update(false);
    }
};

TEST_F(UnlockNoticeTest, tellsOnceWhoWasSeenAndLocksAgain) {
    unlockFor("Robin");
    ASSERT_TRUE(notices.shown);
    EXPECT_EQ(notices.shown->title, "Unlocked for Robin");
    EXPECT_TRUE(notices.shown->isBrief);
    notices.onPressed();
    notices.onPressed();
    EXPECT_EQ(session.lockedAgain, 1);
    EXPECT_FALSE(notices.shown);

    unlockFor("Kim");
    EXPECT_EQ(notices.shown->title, "Unlocked for Kim");
    // Gone by itself.
    notices.shown.reset();
    notice->update(false);
    EXPECT_FALSE(notices.shown);

    unlockFor("Kim");
    lock();
    EXPECT_FALSE(notices.shown) << "on a locked screen";
    notices.onPressed();
    EXPECT_EQ(session.lockedAgain, 1);

    unlockFor("Kim");
    notice.reset();
    EXPECT_FALSE(notices.shown || notices.onPressed);
}

TEST_F(UnlockNoticeTest, tellsNothingOfOtherUnlocks) {
    // By the password, without a look, after one of which nothing came, and after a failed request.
    lock();
    notice->update(false);
    lock();
    log(logevent::recognised, "Robin");
    log(logevent::failed);
    notice->update(false);
    EXPECT_FALSE(notices.shown);
    lock();
    log(logevent::unlocked);
    notice->update(false);
    EXPECT_FALSE(notices.shown) << "of the lock before";

    session.setOpening(LockOpening::typing);
    unlockFor("Robin");
    EXPECT_FALSE(notices.shown) << "the island tells";
}

}  // namespace
}  // namespace marrowby
