// SPDX-License-Identifier: Apache-2.0

// Operates the application's windows as a user does.

#include "Tests/Unlock/FakeComputer.h"
#import "Tests/Unlock/macOS/WindowDriver.h"
#include "Unlock/UnlockApplication.h"
#include "Unlock/macOS/AppKitApplicationWindows.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using Window = UnlockOpening::Window;

/// A page with every kind of row; records the calls.
class EveryRow final : public WindowPresenter {
  public:
    explicit EveryRow(ApplicationWindows& windows) : windows_(windows) {}

    [[nodiscard]] WindowPage page() const override {
        const auto id = [](std::size_t item) {
            return ControlID{.control = WindowControl::useFace, .item = item};
        };
        std::vector<WindowRow> rows{
            WindowRow::Heading{"Heading"},
            WindowRow::Text{"A text"},
            WindowRow::Status{.isGood = true,
                              .title = "Status",
                              .detail = "Its detail",
                              .fix = WindowButton{.id = id(1), .title = "Mend"}},
            WindowRow::Toggle{.id = id(2), .title = "Switch", .detail = "Its detail", .isOn = isOn},
            WindowRow::Choice{.id = id(3),
                              .title = "Choice",
                              .detail = {},
                              .options = {"one", "two", "two"},
                              .selected = chosen},
            WindowRow::Actions{
                .title = "Actions",
                .detail = {},
                .buttons = {{.id = id(4), .title = "Remove", .isDestructive = true}}},
            WindowRow::TextField{.id = id(5), .title = "Name", .text = text},
            WindowRow::SecretField{.id = id(6), .title = "Password"},
            WindowRow::Guide{.progress = 0.4, .direction = 45, .hint = "Look right"},
            WindowRow::Log{{"one line", "another"}}};
        if (hasFewRows) rows.resize(1);
        return {.title = "Every row",
                .detail = "One of each kind",
                .rows = std::move(rows),
                .problem = said.empty() ? "" : "Last: " + said.back(),
                .buttons = {{.id = id(7), .title = "Fewer"},
                            {.id = id(8), .title = "Close", .isDefault = true}}};
    }
    void press(ControlID id) override {
        said.push_back("press " + std::to_string(id.item));
        if (id.item == 7) hasFewRows = true;
        if (id.item == 8) windows_.close(Window::settings);
    }
    void toggle(ControlID id, bool on) override {
        isOn = on;
        said.push_back("toggle " + std::to_string(id.item));
    }
    void choose(ControlID id, std::size_t option) override {
        chosen = option;
        said.push_back("choose " + std::to_string(id.item));
    }
    void enter(ControlID id, std::string typed) override {
        text = std::move(typed);
        said.push_back("enter " + std::to_string(id.item));
    }
    void enter(ControlID id, SecretBytes typed) override {
        const auto bytes = typed.values();
        if (!bytes.empty())
            said.push_back("secret " + std::to_string(id.item) + " " +
                           std::string(bytes.begin(), bytes.end()));
    }
    void windowClosed() override { said.emplace_back("closed"); }

    bool isOn = false;
    bool hasFewRows = false;
    std::size_t chosen = 0;
    std::string text;
    std::vector<std::string> said;

  private:
    ApplicationWindows& windows_;
};

class MacWindows : public testing::Test, protected WindowDriver {
  protected:
    ~MacWindows() override { settle(); }

    /// Windows are freed on the loop's last turn that used them.
    static bool noWindowIsLeft() {
        return waitUntil([] { return windowCount() == 0; });
    }

    AppKitApplicationWindows windows;
};

TEST_F(MacWindows, reportEveryControlsAction) {
    EveryRow presenter(windows);
    windows.show(Window::settings, presenter);
    settle();
    takePicture(window(), "every-row");

    operate(control(NSSwitch.class));
    EXPECT_TRUE(presenter.isOn);
    operate(control(NSPopUpButton.class));
    EXPECT_EQ(presenter.chosen, 2U);
    operate(control(NSTextField.class), @"Ännä");
    EXPECT_EQ(presenter.text, "Ännä");
    NSControl* const secret = control(NSSecureTextField.class);
    static_cast<NSTextField*>(secret).stringValue = @"s3crét";
    EXPECT_TRUE(press(@"Mend"));
    EXPECT_EQ(secret.stringValue.length, 0U);
    EXPECT_TRUE(press(@"Remove") && press(@"Fewer"));
    EXPECT_EQ(controls().count, 2U);
    takePicture(window(), "fewer-rows");
    EXPECT_TRUE(press(@"Close"));
    EXPECT_FALSE(windows.isOpen(Window::settings));
    EXPECT_THAT(presenter.said, ElementsAre("toggle 2", "choose 3", "enter 5", "secret 6 s3crét",
                                            "press 1", "press 4", "press 7", "press 8"));
    EXPECT_TRUE(noWindowIsLeft());
}

TEST_F(MacWindows, reportClosingOnceAndAreFreed) {
    EveryRow presenter(windows);
    for (int i = 0; i < 3; ++i) {
        windows.show(Window::welcome, presenter);
        settle();
        closeWindow();
        EXPECT_FALSE(windows.isOpen(Window::welcome));
    }
    EXPECT_THAT(presenter.said, ElementsAre("closed", "closed", "closed"));
    EXPECT_TRUE(noWindowIsLeft());
}

/// The whole application on fakes, except for its windows.
class MacApplicationWindows : public MacWindows, protected FakeComputer {
  protected:
    void settleAll() {
        FakeComputer::settle();
        WindowDriver::settle();
    }
    void reopen() {
        application.shouldHandleReopen();
        mainThread.advance(TimeInterval(0.7));
        settleAll();
    }
    bool pressed(NSString* title) {
        const bool was = press(title);
        settleAll();
        return was;
    }
    std::string title() { return window() ? std::string(window().title.UTF8String) : ""; }
    void workAll(NSControl* control, NSString* text = @"Anna") {
        operate(control, text);
        settleAll();
    }
    /// Completes the welcome window from its first page.
    void setUpAll() {
        reopen();
        takePicture(window(), "welcome");
        ASSERT_TRUE(pressed(@"Continue"));
        workAll(control(NSSwitch.class));
        ASSERT_TRUE(pressed(@"Continue") && pressed(@"Continue") && pressed(@"Continue"));
        ASSERT_EQ(title(), "Save your face");
        mainThread.advance(TimeInterval(0.1));
        hold(EnrollmentPose::center);
        WindowDriver::settle();
        takePicture(window(), "capture");
        holdAllPoses();
        settleAll();
        ASSERT_EQ(title(), "Name this look");
        workAll(control(NSTextField.class));
        ASSERT_TRUE(pressed(@"Continue"));
        static_cast<NSTextField*>(control(NSSecureTextField.class)).stringValue = @"secret";
        takePicture(window(), "password");
        ASSERT_TRUE(pressed(@"Continue"));
        ASSERT_TRUE(pressed(@"Continue") && pressed(@"Done")) << title();
    }

    bool isTerminated = false;
    UnlockApplication application{
        platform(),
        resources(),
        windows,
        {.log = [](const LogLine&) {}, .terminate = [this] { isTerminated = true; }}};
};

TEST_F(MacApplicationWindows, leadThroughTheWelcomeToAReadyUnlock) {
    @autoreleasepool {
        setUpAll();
    }
    EXPECT_TRUE(application.model().status().isReady());
    EXPECT_TRUE(application.model().state().hasPassword);
    ASSERT_EQ(application.model().state().identities.size(), 1U);
    EXPECT_EQ(application.model().state().identities.front().name, "Anna");
    EXPECT_TRUE(noWindowIsLeft());
}

TEST_F(MacApplicationWindows, operateEveryControlOfTheSettings) {
    @autoreleasepool {
        setUpAll();
        reopen();
        takePicture(window(), "settings");
    }
    std::set<std::string> titles;
    NSUInteger worked = 0;
    for (bool isThrough = false; !isThrough; ++worked) {
        @autoreleasepool {
            if (!windows.isOpen(Window::settings)) reopen();
            workAll(controls()[worked]);
            titles.insert(title());
            takePicture(window(), "settings-" + std::to_string(worked));
            // Closes a question or another window, back to the settings.
            if (!pressed(@"Cancel") && title() != "Marrowby Unlock") closeWindow();
            settleAll();
            if (!windows.isOpen(Window::settings)) reopen();
            isThrough = worked + 1 >= controls().count;
        }
    }
    EXPECT_GE(worked, 14U);
    EXPECT_THAT(titles, testing::Contains("Erase everything?"));
    EXPECT_FALSE(isTerminated);
    @autoreleasepool {
        application.willTerminate();
        windows.close(Window::settings);
        windows.close(Window::welcome);
    }
    EXPECT_TRUE(noWindowIsLeft());
}

}  // namespace
}  // namespace marrowby
