#include "UnlockCore/Storage/AppDataFolder.h"

#include <gtest/gtest.h>

namespace marrowby {
namespace {

TEST(AppDataFolder, keepsATestBuildApart) {
    EXPECT_EQ(AppDataFolder::in("/base", std::nullopt).facesFile(),
              "/base/Marrowby Unlock/Faces.sealed");
    EXPECT_EQ(AppDataFolder::in("/base", "7").passwordFile(),
              "/base/Marrowby Unlock (test-7)/Password.sealed");
}

}  // namespace
}  // namespace marrowby
