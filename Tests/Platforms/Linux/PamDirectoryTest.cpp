#include "Platforms/Linux/PamDirectory.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"
#include "UnlockCore/PasswordEntry/OpenDirectoryPasswordVerifier.h"

#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

/// Rules of the test's own: a checker that knows one password.
struct PamDirectoryTest : testing::Test {
    TemporaryFolder folder;

    void write(const char* name, const std::string& text) const {
        std::ofstream(folder.path() / name) << text;
    }
    [[nodiscard]] PasswordCheckResult check(const std::string& service,
                                            std::string_view password) const {
        PamDirectory directory({.name = service, .folder = folder.path()});
        return OpenDirectoryPasswordVerifier(directory, "anna")
            .check({reinterpret_cast<const std::uint8_t*>(password.data()), password.size()});
    }
};

TEST_F(PamDirectoryTest, tellsRightFromWrongFromNotKnown) {
    write("password", "é ß 字😀 two  spaces");
    write("checker", "tr -d '\\000' | cmp -s - \"$1\"\n");
    write("desk", "auth sufficient pam_exec.so expose_authtok quiet /bin/sh [" +
                      (folder.path() / "checker").string() + "] [" +
                      (folder.path() / "password").string() + "]\nauth required pam_deny.so\n");
    write("away", "auth required pam_nowhere.so\n");

    EXPECT_EQ(check("desk", "é ß 字😀 two  spaces"),
              PasswordCheckResult(PasswordCheckResult::Correct{}));
    for (const char* wrong : {"é ß 字😀 two spaces", "x"})
        EXPECT_EQ(check("desk", wrong), PasswordCheckResult(PasswordCheckResult::Incorrect{}));
    const auto unsure = check("away", "x");
    ASSERT_TRUE(std::holds_alternative<PasswordCheckResult::Unavailable>(unsure));
    EXPECT_FALSE(std::get<PasswordCheckResult::Unavailable>(unsure).explanation.empty());
}

}  // namespace
}  // namespace marrowby
