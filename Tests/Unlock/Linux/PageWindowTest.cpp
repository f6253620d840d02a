// SPDX-License-Identifier: Apache-2.0
#include "Tests/SecretTraces/OwnMemory.h"
#include "Unlock/Linux/PageWindow.h"
#include "Unlock/Linux/QtApplicationWindows.h"
#include "Unlock/Linux/SecretField.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace marrowby {
namespace {

using testing::ElementsAre;
using Control = WindowControl;
using Row = WindowRow;

/// Shows the test's page and records the calls.
class RecordingPresenter final : public WindowPresenter {
  public:
    WindowPage shown;
    std::vector<std::string> calls;
    std::function<void()> onPress = [] {};
    std::optional<SecretBytes> secret;

    [[nodiscard]] WindowPage page() const override { return shown; }
    void press(ControlID id) override {
        record("press", id);
        onPress();
    }
    void toggle(ControlID id, bool isOn) override { record(isOn ? "on" : "off", id); }
    void choose(ControlID id, std::size_t option) override {
        record("choose " + std::to_string(option), id);
    }
    void enter(ControlID id, std::string text) override { record("enter “" + text + "”", id); }
    void enter(ControlID id, SecretBytes bytes) override {
        record("secret of " + std::to_string(bytes.size()), id);
        secret = std::move(bytes);
    }
    void windowClosed() override { calls.emplace_back("closed"); }

  private:
    void record(const std::string& what, ControlID id) {
        calls.push_back(what + " " + std::to_string(static_cast<int>(id.control)) + "." +
                        std::to_string(id.item));
    }
};

WindowButton button(Control control, std::string title, bool isDefault = false) {
    return {.id = {control, 0}, .title = std::move(title), .isDefault = isDefault};
}

WindowPage everything() {
    return {.title = "Everything",
            .detail = "A page with a row of every kind.",
            .rows = {Row::Heading{"Heading"}, Row::Text{"Text"},
                     Row::Status{.isGood = false,
                                 .title = "Not ready",
                                 .detail = "Why.",
                                 .fix = button(Control::fix, "Fix…")},
                     Row::Toggle{{Control::enabled}, "Toggle", "What it does.", true},
                     Row::Choice{{Control::autoLock}, "Choice", "", {"one", "two", "three"}, 1},
                     Row::Actions{"Actions", "", {button(Control::addFace, "Add")}},
                     Row::TextField{{Control::faceName}, "Name", "Ada"},
                     Row::SecretField{{Control::password}, "Password"},
                     Row::Guide{0.5, 90.0, "Turn right"}, Row::Log{{"a line"}}},
            .problem = "Something went wrong.",
            .buttons = {button(Control::goBack, "Go Back"),
                        button(Control::goForward, "Continue", true)}};
}

struct PageWindowTest : testing::Test {
    int argumentCount = 3;
    char program[5] = "test";
    char option[10] = "-platform";
    char value[10] = "offscreen";
    char* arguments[4] = {program, option, value, nullptr};
    QApplication application{argumentCount, arguments};

    RecordingPresenter presenter;
    QtApplicationWindows windows;

    // DeferredDelete events are only processed by a running loop.
    void TearDown() override { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    QWidget& window() {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && dynamic_cast<PageWindow*>(widget)) return *widget;
        throw std::runtime_error("no window is open");
    }
    template <typename Widget = QWidget>
    Widget& control(Control control, int item = 0) {
        auto* found = window().findChild<Widget*>(
            QStringLiteral("control-%1-%2").arg(static_cast<int>(control)).arg(item));
        if (found == nullptr) throw std::runtime_error("no such control");
        return *found;
    }
    void show() {
        windows.show(ApplicationWindows::Window::welcome, presenter);
        QApplication::setActiveWindow(&window());
    }
    void redraw() { windows.refresh(ApplicationWindows::Window::welcome); }
};

std::string of(Control control) {
    return " " + std::to_string(static_cast<int>(control)) + ".0";
}

TEST_F(PageWindowTest, reportsOnlyTheUsersActions) {
    presenter.shown = everything();
    show();
    presenter.shown.rows.front() = Row::Heading{"Another heading"};
    redraw();
    EXPECT_THAT(presenter.calls, ElementsAre());

    QTest::mouseClick(&control(Control::enabled), Qt::LeftButton);
    QTest::keyClick(&control(Control::autoLock), Qt::Key_Down);
    QTest::keyClick(&control(Control::faceName), Qt::Key_End);
    QTest::keyClick(&control(Control::faceName), 'e');
    QTest::mouseClick(&control(Control::fix), Qt::LeftButton);
    QTest::keyClick(&control(Control::password), 'x');
    QTest::keyClick(&control(Control::password), Qt::Key_V, Qt::ControlModifier);
    QTest::keyClick(&control(Control::password), Qt::Key_Return);
    EXPECT_THAT(
        presenter.calls,
        ElementsAre("off" + of(Control::enabled), "choose 2" + of(Control::autoLock),
                    "enter “Adae”" + of(Control::faceName), "secret of 0" + of(Control::password),
                    "press" + of(Control::fix), "secret of 1" + of(Control::password),
                    "press" + of(Control::goForward)));
    // The presenter rejected all of it.
    EXPECT_TRUE(control<QCheckBox>(Control::enabled).isChecked());
    EXPECT_EQ(control<QComboBox>(Control::autoLock).currentIndex(), 1);
    EXPECT_EQ(control<QLineEdit>(Control::faceName).text(), "Ada");

    presenter.calls.clear();
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_THAT(presenter.calls, ElementsAre("closed"));
    EXPECT_FALSE(windows.isOpen(ApplicationWindows::Window::welcome));

    // Closed by the program: the presenter is not called.
    show();
    presenter.calls.clear();
    presenter.onPress = [this] { windows.close(ApplicationWindows::Window::welcome); };
    QTest::mouseClick(&control(Control::goBack), Qt::LeftButton);
    EXPECT_THAT(presenter.calls,
                ElementsAre("secret of 0" + of(Control::password), "press" + of(Control::goBack)));
}

TEST_F(PageWindowTest, keepsFocusAndTypedTextWhileThePageStays) {
    presenter.shown = everything();
    show();
    auto& name = control<QLineEdit>(Control::faceName);
    EXPECT_TRUE(name.hasFocus()) << "the first field of a new page";
    name.setCursorPosition(1);
    auto& secret = control<SecretField>(Control::password);
    for (const char character : {'a', 'b', 'c'})
        QTest::keyClick(&secret, character);
    QTest::keyClick(&secret, Qt::Key_Backspace);

    presenter.shown.rows.insert(presenter.shown.rows.begin(), Row::Text{"Above all"});
    presenter.shown.rows.erase(presenter.shown.rows.begin() + 3);
    presenter.shown.buttons.erase(presenter.shown.buttons.begin());
    redraw();
    EXPECT_EQ(&control<QLineEdit>(Control::faceName), &name);
    EXPECT_TRUE(name.hasFocus());
    EXPECT_EQ(name.cursorPosition(), 1);
    EXPECT_EQ(control<SecretField>(Control::password).characterCount(), 2U);
    QTest::keyClick(&name, Qt::Key_Tab);
    EXPECT_TRUE(secret.hasFocus()) << "Tab goes down the page";
}

TEST_F(PageWindowTest, passesThePasswordOnWithoutATrace) {
    presenter.shown = everything();
    show();
    for (std::size_t i = 0; i < passwordSize; ++i)
        QTest::keyClick(&control(Control::password), static_cast<char>(passwordByte(i)));
    EXPECT_EQ(countInMemory(thePassword), 1U);
    QTest::keyClick(&control(Control::password), Qt::Key_Return);
    ASSERT_TRUE(presenter.secret);
    EXPECT_EQ(countInMemory(thePassword), 1U) << "only the presenter’s copy";
    presenter.secret.reset();

    // One secret longer than the field, with characters of 1 to 4 bytes, and one that is never
    // submitted.
    std::string expected;
    for (int i = 0; i < 100; ++i) {
        for (const char32_t character : {U'a', U'ä', U'€', U'😀'}) {
            const QString text = QString::fromUcs4(&character, 1);
            QTest::sendKeyEvent(QTest::Press, &control(Control::password), Qt::Key_unknown, text,
                                Qt::NoModifier);
            expected += text.toStdString();
        }
    }
    QTest::mouseClick(&control(Control::goBack), Qt::LeftButton);
    ASSERT_TRUE(presenter.secret);
    const auto values = presenter.secret->values();
    EXPECT_TRUE(std::ranges::equal(values, expected, {}, {},
                                   [](char byte) { return static_cast<std::uint8_t>(byte); }));
    for (std::size_t i = 0; i < passwordSize; ++i)
        QTest::keyClick(&control(Control::password), static_cast<char>(passwordByte(i)));
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_EQ(countInMemory(thePassword), 0U);
    EXPECT_EQ(countInMemory(thePasswordAsUTF16), 0U);
}

}  // namespace
}  // namespace marrowby
