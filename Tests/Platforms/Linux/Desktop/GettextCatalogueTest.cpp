// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/GettextCatalogue.h"

#include <clocale>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

struct GettextCatalogueTest : testing::Test {
    /// As in a session with these settings.
    static GettextCatalogue in(const char* locale, const char* language) {
        std::setlocale(LC_ALL, "C");
        setenv("LC_ALL", locale, 1);
        setenv("LANGUAGE", language, 1);
        return GettextCatalogue(
            GettextCatalogue::folderFor(std::filesystem::read_symlink("/proc/self/exe")));
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

}  // namespace
}  // namespace marrowby
