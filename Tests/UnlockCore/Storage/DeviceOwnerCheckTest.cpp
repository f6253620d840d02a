#include "Tests/Fakes/VaultBench.h"
#include "UnlockCore/Storage/DeviceOwnerCheck.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Outcome = std::optional<std::expected<void, StorageError>>;

std::expected<void, StorageError> confirm(FakeOwnerAuthentication& owner) {
    Outcome outcome;
    DeviceOwnerCheck(owner).confirmOwner("save it", [&](const auto& result) { outcome = result; });
    return outcome.value();
}

TEST(DeviceOwnerCheck, tellsCancelledFromFailed) {
    const StorageError cancelled = OwnerCheckError(OwnerCheckError::Cancelled{});
    const auto error = [](std::int64_t code,
                          const char* domain = OwnerAuthenticationError::authenticationDomain) {
        return OwnerAuthenticationError{
            .domain = domain, .code = code, .message = "as the system says it"};
    };
    const std::pair<FakeOwnerAuthentication::Reply, StorageError> cases[] = {
        {false, cancelled},
        {std::unexpected(error(-2)), cancelled},
        {std::unexpected(error(-4)), cancelled},
        {std::unexpected(error(-9)), cancelled},
        {std::unexpected(error(-1)), error(-1)},
        {std::unexpected(error(-8)), error(-8)},
        {std::unexpected(error(-4, "NSOSStatusErrorDomain")), error(-4, "NSOSStatusErrorDomain")},
        {std::unexpected(error(-2, "")), error(-2, "")},
    };
    FakeOwnerAuthentication owner;
    for (const auto& [reply, expected] : cases) {
        owner.answer = reply;
        EXPECT_EQ(problemOf(confirm(owner)), expected) << reply.has_value();
    }
    EXPECT_EQ(owner.contexts, std::size(cases)) << "a fresh one each time";
    EXPECT_EQ(owner.prompts.back().policy, 2);
    owner.answer = true;
    EXPECT_TRUE(confirm(owner));
}

TEST(DeviceOwnerCheck, saysWhyItCannotAsk) {
    FakeOwnerAuthentication owner;
    owner.answer = true;
    owner.unavailable =
        OwnerAuthenticationError{.domain = OwnerAuthenticationError::authenticationDomain,
                                 .code = -5,
                                 .message = "No password is set."};
    const auto outcome = confirm(owner);
    ASSERT_FALSE(outcome);
    EXPECT_EQ(description(outcome.error()),
              "macOS can’t check it’s you right now. No password is set.");
    EXPECT_TRUE(owner.prompts.empty());
}

}  // namespace
}  // namespace marrowby
