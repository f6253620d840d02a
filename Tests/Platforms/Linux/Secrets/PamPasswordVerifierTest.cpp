// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/Account.h"
#include "Platforms/Linux/Secrets/PamPasswordVerifier.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <fstream>
#include <string>
#include <string_view>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// PAM services of the test: a module that knows one password.
struct PamPasswordVerifierTest : testing::Test {
    TemporaryFolder folder;

    void write(const char* name, const std::string& text) const {
        std::ofstream(folder.path() / name) << text;
    }
    /// The rule of the module that accepts the password.
    [[nodiscard]] std::string checker() const {
        return "auth sufficient pam_exec.so expose_authtok quiet /bin/sh [" +
               (folder.path() / "checker").string() + "] [" +
               (folder.path() / "password").string() + "]\n";
    }
    [[nodiscard]] PasswordCheckResult check(const std::string& service, std::string_view password,
                                            const std::string& user = "anna") const {
        return PamPasswordVerifier(user, {.name = service, .folder = folder.path()})
            .check({reinterpret_cast<const std::uint8_t*>(password.data()), password.size()});
    }
    /// The error when the check failed, else its result.
    [[nodiscard]] std::string unavailable(const std::string& service, std::string_view password,
                                          const std::string& user = "anna") const {
        const auto result = check(service, password, user);
        const auto* unavailable = std::get_if<PasswordCheckResult::Unavailable>(&result);
        if (unavailable != nullptr) return unavailable->explanation;
        return result == PasswordCheckResult(PasswordCheckResult::Correct{}) ? "correct"
                                                                             : "incorrect";
    }
};

TEST_F(PamPasswordVerifierTest, distinguishesRightWrongAndUnavailable) {
    write("password", "é ß 字😀 two  spaces");
    write("checker", "tr -d '\\000' | cmp -s - \"$1\"\n");
    write("desk", checker() + "auth required pam_deny.so\n");

    EXPECT_EQ(check("desk", "é ß 字😀 two  spaces"),
              PasswordCheckResult(PasswordCheckResult::Correct{}));
    for (const char* wrong : {"é ß 字😀 two spaces", "x"})
        EXPECT_EQ(check("desk", wrong), PasswordCheckResult(PasswordCheckResult::Incorrect{}));
}

TEST_F(PamPasswordVerifierTest, callsThePasswordWrongOnlyIfItWasChecked) {
    write("password", "right");
    write("checker", "tr -d '\\000' | cmp -s - \"$1\"\n");
    const struct {
        const char* rule;
        const char* said;
    } cases[] = {
        {"auth required pam_debug.so auth=auth_err", "incorrect"},
        {"auth required pam_debug.so auth=user_unknown", "The system doesn’t know this account."},
        {"auth required pam_debug.so auth=maxtries",
         "There were too many tries. The system takes no more for now."},
        {"auth required pam_debug.so auth=acct_expired", "This account has expired."},
        {"auth required pam_debug.so auth=cred_expired", "The password has expired."},
        // PAM's own text, here the module's options.
        {"auth required pam_debug.so auth=authinfo_unavail", "auth=authinfo_unavail"},
        {"auth required pam_nowhere.so", "Module is unknown"},
    };
    for (const auto& [rule, said] : cases) {
        write("desk", checker() + rule + "\n");
        EXPECT_EQ(unavailable("desk", "wrong"), said);
    }
    write("shut", "auth required pam_deny.so\n");
    EXPECT_EQ(unavailable("shut", "right"), "The system refused without asking for the password.");
    for (const char* noPassword : {"", "\xFF"})
        EXPECT_EQ(unavailable("shut", noPassword), "incorrect") << "not passed to PAM";
}

/// pam_faillock, which most systems use, with its tallies in the test's folder.
TEST_F(PamPasswordVerifierTest, passesOnTheMessageOfALockedAccount) {
    const auto account = Account::current();
    ASSERT_TRUE(account);
    write("password", "right");
    write("checker", "tr -d '\\000' | cmp -s - \"$1\"\n");
    const std::string counter = " dir=" + folder.path().string() + " deny=2 even_deny_root\n";
    write("desk", "auth requisite pam_faillock.so preauth" + counter + checker() +
                      "auth required pam_faillock.so authfail" + counter +
                      "auth required pam_deny.so\n");
    EXPECT_EQ(unavailable("desk", "right", account->name), "correct");
    EXPECT_EQ(unavailable("desk", "wrong", account->name), "incorrect");
    EXPECT_EQ(unavailable("desk", "wrong", account->name), "incorrect");
    EXPECT_THAT(unavailable("desk", "right", account->name),
                testing::HasSubstr("The account is locked due to 2 failed logins."));
}

}  // namespace
}  // namespace marrowby
