// SPDX-License-Identifier: Apache-2.0
#include "Simulation/Desktop/AccessibleWindows.h"
#include "Tests/Program/ProgramTest.h"

#include <expected>

#include <gmock/gmock.h>
#include <signal.h>

namespace marrowby {
namespace {

using testing::IsEmpty;

/// The program's windows as a screen reader sees them: over AT-SPI's own bus.
class AccessibilityTest : public ProgramTest {
  protected:
    ~AccessibilityTest() override {
        windows.reset();
        if (!launcher_) return;
        // Killed, it would leave its bus behind.
        launcher_->send(SIGTERM);
        launcher_->waitEnded(TimeInterval(60));
    }

    void SetUp() override {
        ProgramTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        const std::string folder = home.path().string();
        launcher_ =
            bus->serve("org.a11y.Bus",
                       {.arguments = {"/usr/libexec/at-spi-bus-launcher", "--launch-immediately"},
                        .environment = {"XDG_RUNTIME_DIR=" + folder, "XDG_CACHE_HOME=" + folder,
                                        "DISPLAY=" + desktop->displayName()}});
        if (!launcher_) GTEST_SKIP() << "Skipped: " << launcher_.error();
        windows.emplace(bus->address());
        environment.insert("QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1");
        environment.insert("ASAN_OPTIONS", wholeStacks);
    }

    /// On the page that has a control of this name, once it is shown.
    void expectNamesBeside(std::string_view name) {
        ASSERT_TRUE(loop.runUntil([&] { return windows->isOn(name).has_value(); }))
            << name << program->recentWords();
        EXPECT_THAT(windows->unnamedControls(), IsEmpty()) << "on the page of “" << name << "”";
    }

    std::optional<AccessibleWindows> windows;

  private:
    std::expected<ChildProcess, std::string> launcher_ = std::unexpected("not started");
};

TEST_F(AccessibilityTest, namesEveryControlAndTogglesASetting) {
    constexpr const char* toggle = "Unlock with your face";
    ASSERT_NO_FATAL_FAILURE(start());
    ASSERT_NO_FATAL_FAILURE(expectNamesBeside("Continue"));
    ASSERT_NO_FATAL_FAILURE(setUpThroughTheWindow());
    ASSERT_NO_FATAL_FAILURE(openWindow());
    ASSERT_NO_FATAL_FAILURE(expectNamesBeside(toggle));

    EXPECT_EQ(windows->isOn(toggle), true);
    EXPECT_TRUE(windows->press(toggle));
    EXPECT_TRUE(loop.runUntil([&] { return tell({"status"}).starts_with("1 Off: "); }));
    EXPECT_EQ(windows->isOn(toggle), false);
    EXPECT_EQ(program->terminate(), EXIT_SUCCESS) << program->recentWords();
}

}  // namespace
}  // namespace marrowby
