// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Rehearsal/Story.h"

#include <QGuiApplication>
#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

const std::filesystem::path models = std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models";
const std::filesystem::path program = MARROWBY_PROGRAM;
/// The data that the first act saved, from which the others start.
const std::filesystem::path prepared = MARROWBY_PREPARED;

bool isInPath(const std::string& name) {
    const char* path = std::getenv("PATH");
    const std::string folders = path != nullptr ? path : "";
    for (std::size_t begin = 0; begin <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', begin), folders.size());
        std::error_code error;
        if (std::filesystem::exists(
                std::filesystem::path(folders.substr(begin, end - begin)) / name, error)) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

/// Of the program that saved it.
std::string stamp() {
    return std::to_string(std::filesystem::last_write_time(program).time_since_epoch().count());
}

bool isPrepared() {
    std::ifstream stream(prepared / "stamp");
    return std::string(std::istreambuf_iterator(stream), {}) == stamp();
}

/// One act of ./run on the rehearsal's own models, by itself.
class Story : public testing::TestWithParam<std::size_t> {
  protected:
    void SetUp() override {
        for (const char* needed : {"Xvfb", "i3lock", "openbox", "gnome-keyring-daemon"})
            if (!isInPath(needed)) GTEST_SKIP() << "Skipped: needs " << needed << ".";
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QGuiApplication>(argumentCount, arguments);
    }

    void playFirstAct() {
        auto stage = Stage::create({.models = models, .program = program});
        ASSERT_TRUE(stage) << stage.error();
        const auto ending = acts().front().play(**stage);
        ASSERT_TRUE(ending) << ending.error();
        std::filesystem::remove_all(prepared);
        const auto kept = (*stage)->keepHome(prepared);
        ASSERT_TRUE(kept) << kept.error();
        std::ofstream(prepared / "stamp") << stamp();
    }

    int argumentCount = 1;
    char name[6] = "story";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QGuiApplication> application;
};

TEST_P(Story, endsAsItShould) {
    if (GetParam() == 0 || !isPrepared()) {
        ASSERT_NO_FATAL_FAILURE(playFirstAct());
    }
    if (GetParam() == 0) return;
    auto stage = Stage::create({.models = models, .program = program, .home = prepared});
    ASSERT_TRUE(stage) << stage.error();
    const auto known = (*stage)->setLoginPassword(firstPassword);
    ASSERT_TRUE(known) << known.error();
    const auto confirmed = confirmOwner(**stage);
    ASSERT_TRUE(confirmed) << confirmed.error();
    const auto ending = acts()[GetParam()].play(**stage);
    EXPECT_TRUE(ending) << ending.error();
}

/// “The owner’s face is held up” → TheOwnersFaceIsHeldUp.
std::string inOneWord(const std::string& title) {
    std::string word;
    bool begins = true;
    for (const char character : title) {
        if (character == ' ') begins = true;
        if (std::isalpha(static_cast<unsigned char>(character)) == 0) continue;
        word += begins ? static_cast<char>(std::toupper(static_cast<unsigned char>(character)))
                       : character;
        begins = false;
    }
    return word;
}

INSTANTIATE_TEST_SUITE_P(Act, Story, testing::Range(std::size_t{0}, acts().size()),
                         [](const auto& act) { return inOneWord(acts()[act.param].title); });

}  // namespace
}  // namespace marrowby
