#include "Rehearsal/Scenes/NetworkFolder.h"
#include "Rehearsal/Story.h"

#include <QGuiApplication>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

bool isInPath(const std::string& program) {
    const char* path = std::getenv("PATH");
    const std::string folders = path != nullptr ? path : "";
    for (std::size_t begin = 0; begin <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', begin), folders.size());
        std::error_code error;
        if (std::filesystem::exists(
                std::filesystem::path(folders.substr(begin, end - begin)) / program, error)) {
            return true;
        }
        begin = end + 1;
    }
    return false;
}

/// The whole road on the rehearsal's own networks, as ./run shows it.
TEST(Story, everyActEndsAsItShould) {
    if (!isInPath("Xvfb") || !isInPath("i3lock")) GTEST_SKIP() << "Skipped: needs Xvfb and i3lock.";
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int argumentCount = 1;
    char name[] = "story";
    char* arguments[] = {name, nullptr};
    const QGuiApplication application(argumentCount, arguments);
    const auto networks = networksIn(std::filesystem::path(MARROWBY_SOURCE_DIR) / "Models");
    ASSERT_TRUE(networks) << networks.error();
    auto stage = Stage::create(networks->folder, MARROWBY_PROGRAM);
    ASSERT_TRUE(stage) << stage.error();
    for (const Act& act : acts()) {
        const auto ending = act.play(**stage);
        (*stage)->killLocker();
        ASSERT_TRUE(ending) << act.title << ": " << ending.error();
    }
    EXPECT_FALSE((*stage)->contactSheet().drawn().isNull());
}

}  // namespace
}  // namespace marrowby
