// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/GettextCatalogue.h"
#include "Tests/Platforms/Linux/TemporaryFolder.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <libintl.h>

namespace marrowby {
namespace {

struct GettextCatalogueTest : testing::Test {
    /// As in a session with these settings.
    static GettextCatalogue in(const char* locale, const char* language,
                               const std::filesystem::path& folder = builtFolder()) {
        std::setlocale(LC_ALL, "C");
        setenv("LC_ALL", locale, 1);
        setenv("LANGUAGE", language, 1);
        return GettextCatalogue(folder);
    }
    static std::filesystem::path builtFolder() {
        return GettextCatalogue::folderFor(std::filesystem::read_symlink("/proc/self/exe"));
    }
    ~GettextCatalogueTest() override {
        unsetenv("LC_ALL");
        unsetenv("LANGUAGE");
        std::setlocale(LC_ALL, "C");
    }
};

TEST_F(GettextCatalogueTest, speaksTheUsersLanguage) {
    const GettextCatalogue german = in("C.UTF-8", "de");
    EXPECT_EQ(german.text("Ready"), "Bereit");
    EXPECT_EQ(german.text("Looking"), "Hinschauen");
    EXPECT_EQ(german.text("{count} second", "{count} seconds", 1), "{count} Sekunde");
    EXPECT_EQ(german.text("{count} second", "{count} seconds", 2), "{count} Sekunden");
    EXPECT_EQ(german.text("Nobody translated this."), "Nobody translated this.");
}

TEST_F(GettextCatalogueTest, speaksEnglishWhereItHasNoOther) {
    for (const auto& [locale, language] :
         {std::pair("C", "de"), std::pair("C.UTF-8", "xx"), std::pair("no-such-locale", "de")}) {
        const GettextCatalogue catalogue = in(locale, language);
        EXPECT_EQ(catalogue.text("Ready"), "Ready") << locale;
        EXPECT_EQ(catalogue.text("{count} second", "{count} seconds", 2), "{count} seconds");
    }
    EXPECT_EQ(GettextCatalogue::folderFor("/nowhere/at/all"), "");
}

TEST_F(GettextCatalogueTest, takesNothingFromTheWorkingDirectory) {
    const TemporaryFolder none;
    ::bindtextdomain("marrowby-unlock", none.path().c_str());
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(builtFolder());
    EXPECT_EQ(in("C.UTF-8", "de", {}).text("Ready"), "Ready");
    std::filesystem::current_path(before);
}

}  // namespace
}  // namespace marrowby
