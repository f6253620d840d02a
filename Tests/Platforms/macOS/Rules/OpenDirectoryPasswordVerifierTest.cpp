// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/OpenDirectoryPasswordVerifier.h"
#include "Tests/Fakes/BytesOf.h"
#include "Tests/Platforms/macOS/Rules/FakeDirectory.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(OpenDirectoryPasswordVerifier, distinguishesAWrongPasswordFromAFailedCheck) {
    const DirectoryError wrong{"com.apple.OpenDirectory", 5000,
                               "Credentials could not be verified."};
    const DirectoryError away{"com.apple.OpenDirectory", 2100, "The node can’t be reached."};
    const DirectoryError foreign{"Elsewhere", 5000, "Something else."};
    const struct {
        const char* what;
        std::optional<DirectoryError> nodeFault;
        std::optional<DirectoryError> recordFault;
        std::optional<DirectoryError> verdict;
        PasswordCheckResult result;
    } cases[] = {
        {"right", {}, {}, {}, PasswordCheckResult::Correct{}},
        {"wrong", {}, {}, wrong, PasswordCheckResult::Incorrect{}},
        {"the node is away", away, {}, {}, PasswordCheckResult::Unavailable{away.message}},
        {"no such user", {}, away, {}, PasswordCheckResult::Unavailable{away.message}},
        {"the record refuses to say", {}, {}, away, PasswordCheckResult::Unavailable{away.message}},
        {"another domain", {}, {}, foreign, PasswordCheckResult::Unavailable{foreign.message}},
    };
    for (const auto& one : cases) {
        FakeDirectory directory;
        directory.nodeFault = one.nodeFault;
        directory.recordFault = one.recordFault;
        directory.verdict = one.verdict;
        OpenDirectoryPasswordVerifier verifier(directory, "anna");
        EXPECT_EQ(verifier.check(bytesOf("sesame")), one.result) << one.what;
        std::vector<std::string> asked{"node 0x2201"};
        if (!one.nodeFault) asked.emplace_back("dsRecTypeStandard:Users anna");
        if (!one.nodeFault && !one.recordFault) asked.emplace_back("verify sesame");
        EXPECT_EQ(directory.asked, asked) << one.what;
    }
}

TEST(OpenDirectoryPasswordVerifier, checksOnlyWellFormedPasswords) {
    FakeDirectory directory;
    OpenDirectoryPasswordVerifier verifier(directory, "anna");
    for (const char* text : {"", "\xFF"}) {
        EXPECT_EQ(verifier.check(bytesOf(text)),
                  PasswordCheckResult(PasswordCheckResult::Incorrect{}));
    }
    EXPECT_TRUE(directory.asked.empty());
}

}  // namespace
}  // namespace marrowby
