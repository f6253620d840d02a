// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/DeviceOwnerCheck.h"
#include "Tests/Platforms/macOS/Rules/FakeOwnerAuthentication.h"

#include <optional>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

OwnerCheck::Result confirm(FakeOwnerAuthentication& owner) {
    std::optional<OwnerCheck::Result> outcome;
    DeviceOwnerCheck(owner).confirmOwner("save it", [&](const auto& result) { outcome = result; });
    return outcome.value();
}

TEST(DeviceOwnerCheck, distinguishesCancelledFromFailed) {
    const OwnerCheck::Result cancelled =
        std::unexpected(OwnerCheckError(OwnerCheckError::Cancelled{}));
    const OwnerCheck::Result failed = std::unexpected(OwnerCheckFailure{"as the system says it"});
    const auto error = [](std::int64_t code,
                          const char* domain = OwnerAuthenticationError::authenticationDomain) {
        return OwnerAuthenticationError{
            .domain = domain, .code = code, .message = "as the system says it"};
    };
    const std::pair<FakeOwnerAuthentication::Reply, OwnerCheck::Result> cases[] = {
        {false, cancelled},
        {std::unexpected(error(-2)), cancelled},
        {std::unexpected(error(-4)), cancelled},
        {std::unexpected(error(-9)), cancelled},
        {std::unexpected(error(-1)), failed},
        {std::unexpected(error(-8)), failed},
        {std::unexpected(error(-4, "NSOSStatusErrorDomain")), failed},
        {std::unexpected(error(-2, "")), failed},
    };
    FakeOwnerAuthentication owner;
    for (const auto& [reply, expected] : cases) {
        owner.answer = reply;
        EXPECT_EQ(confirm(owner), expected) << reply.has_value();
    }
    EXPECT_EQ(owner.contexts, std::size(cases)) << "a new context each time";
    EXPECT_EQ(owner.prompts.back().policy, 2);
    owner.answer = true;
    EXPECT_TRUE(confirm(owner));
}

TEST(DeviceOwnerCheck, reportsWhyItCannotAsk) {
    FakeOwnerAuthentication owner;
    owner.answer = true;
    owner.unavailable =
        OwnerAuthenticationError{.domain = OwnerAuthenticationError::authenticationDomain,
                                 .code = -5,
                                 .message = "No password is set."};
    EXPECT_EQ(confirm(owner), OwnerCheck::Result(std::unexpected(OwnerCheckError(
                                  OwnerCheckError::Unavailable{"No password is set."}))));
    EXPECT_EQ(DeviceOwnerCheck(owner).canConfirm(),
              (std::expected<void, std::string>(std::unexpected("No password is set."))));
    EXPECT_TRUE(owner.prompts.empty());
}

}  // namespace
}  // namespace marrowby
