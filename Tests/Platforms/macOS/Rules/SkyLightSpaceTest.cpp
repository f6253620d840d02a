// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/SkyLightSpace.h"
#include "Tests/Fakes/FakeWindowServer.h"

#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;

/// Records its calls. Its connection is 7, its space 2^32 + 9.
class RecordedFunctions final : public SkyLightFunctions {
  public:
    std::vector<std::string> calls;

    [[nodiscard]] Connection mainConnectionID() override {
        note("connection");
        return 7;
    }
    [[nodiscard]] Space spaceCreate(Connection connection, std::int32_t one,
                                    std::int32_t zero) override {
        note("create", connection, one, zero);
        return 4'294'967'305;
    }
    void spaceSetAbsoluteLevel(Connection connection, Space space, std::int32_t level) override {
        note("level", connection, space, level);
    }
    void showSpaces(Connection connection, std::span<const Space> spaces) override {
        note("show", connection, spaces.size(), spaces.front());
    }
    void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                            std::span<const std::int64_t> windows,
                                            std::int32_t options) override {
        note("add", connection, space, windows.size(), windows.front(), options);
    }
    void removeWindowsFromSpaces(Connection connection, std::span<const std::int64_t> windows,
                                 std::span<const Space> spaces) override {
        note("remove", connection, windows.size(), windows.front(), spaces.front());
    }

  private:
    template <typename... Parts>
    void note(const char* name, const Parts&... parts) {
        std::ostringstream text;
        text << name;
        ((text << ' ' << parts), ...);
        calls.push_back(text.str());
    }
};

TEST(SkyLightSpace, liesAboveTheLockScreenAndTakesPanelsOutOfOtherSpaces) {
    const auto functions = std::make_shared<RecordedFunctions>();
    FakeWindowServer server;
    const auto panel = server.makePanel({}, nullptr);
    SkyLightSpace space(functions);
    space.add(*panel);
    space.remove(*panel);
    EXPECT_THAT(functions->calls, ElementsAre("connection", "create 7 1 0",
                                              "level 7 4294967305 400", "show 7 1 4294967305",
                                              "add 7 4294967305 1 1 7", "remove 7 1 1 4294967305"));
}

}  // namespace
}  // namespace marrowby
