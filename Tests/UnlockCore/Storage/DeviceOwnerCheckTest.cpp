#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/Storage/DeviceOwnerCheck.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Outcome = std::optional<std::expected<void, StorageError>>;

Outcome confirm(FakeOwnerAuthentication& owner) {
    Outcome outcome;
    DeviceOwnerCheck(owner).confirmOwner("save it", [&](const auto& result) { outcome = result; });
    return outcome;
}

TEST(DeviceOwnerCheck, asksWithAFreshContextEachTime) {
    FakeOwnerAuthentication owner;
    owner.answer = true;
    EXPECT_TRUE(confirm(owner).value());
    EXPECT_TRUE(confirm(owner).value());
    EXPECT_EQ(owner.contexts, 2U);
    ASSERT_EQ(owner.prompts.size(), 2U);
    EXPECT_EQ(owner.prompts[1].policy, 2);
    EXPECT_EQ(owner.prompts[1].reason, "save it");
}

TEST(DeviceOwnerCheck, tellsCancelledFromFailed) {
    const StorageError cancelled = OwnerCheckError(OwnerCheckError::Cancelled{});
    const auto error = [](std::int64_t code) {
        return OwnerAuthenticationError{.code = code, .message = "as the system says it"};
    };
    const std::pair<FakeOwnerAuthentication::Reply, StorageError> cases[] = {
        {false, cancelled},
        {std::unexpected(error(-2)), cancelled},
        {std::unexpected(error(-4)), cancelled},
        {std::unexpected(error(-9)), cancelled},
        {std::unexpected(error(-1)), error(-1)},
        {std::unexpected(error(-8)), error(-8)},
    };
    for (const auto& [reply, expected] : cases) {
        FakeOwnerAuthentication owner;
        owner.answer = reply;
        EXPECT_EQ(problemOf(confirm(owner).value()), expected) << reply.has_value();
    }
}

TEST(DeviceOwnerCheck, saysWhyItCannotAsk) {
    FakeOwnerAuthentication owner;
    for (const char* explanation : {"No password is set.", ""}) {
        owner.unavailable = OwnerAuthenticationError{.code = -5, .message = explanation};
        const auto outcome = confirm(owner).value();
        ASSERT_FALSE(outcome);
        EXPECT_EQ(description(outcome.error()),
                  std::string("macOS can’t check it’s you right now. ") + explanation);
    }
    EXPECT_TRUE(owner.prompts.empty());
}

}  // namespace
}  // namespace marrowby
