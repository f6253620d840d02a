#include "Rehearsal/Story.h"
#include "Tests/Fakes/SharedFolder.h"

#include <QCoreApplication>
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

/// The whole road, as ./run shows it: enrolment, an unlock, a stranger, a photo, a password out of
/// date.
TEST(Story, everyActEndsAsItShould) {
    const auto shared = sharedFolder();
    if (!shared) GTEST_SKIP() << noSharedFolder;
    if (!isInPath("Xvfb") || !isInPath("i3lock")) GTEST_SKIP() << "Skipped: needs Xvfb and i3lock.";
    int argumentCount = 1;
    char name[] = "story";
    char* arguments[] = {name, nullptr};
    const QCoreApplication application(argumentCount, arguments);
    auto stage = Stage::create(*shared / "models");
    ASSERT_TRUE(stage) << stage.error();
    for (const Act& act : acts()) {
        const auto ending = act.play(**stage);
        (*stage)->killLocker();
        ASSERT_TRUE(ending) << act.title << ": " << ending.error();
    }
}

}  // namespace
}  // namespace marrowby
