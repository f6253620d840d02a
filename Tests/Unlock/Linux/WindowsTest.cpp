// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/GettextCatalogue.h"
#include "Tests/Unlock/FakeComputer.h"
#include "Unlock/Linux/LinuxWords.h"
#include "Unlock/Linux/QtApplicationWindows.h"
#include "Unlock/Pages/TryPage.h"
#include "Unlock/UnlockApplication.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTest>
#include <QWindow>
#include <algorithm>
#include <array>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace marrowby {
namespace {

using testing::IsEmpty;

/// Qt on one made-up screen.
class OffscreenQt {
  public:
    explicit OffscreenQt(QSize screen) {
        const QString path = folder_.filePath(QStringLiteral("screen.json"));
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) throw std::runtime_error("no folder");
        const QJsonObject one{{"name", "made-up"},
                              {"x", 0},
                              {"y", 0},
                              {"width", screen.width()},
                              {"height", screen.height()},
                              {"logicalDpi", 96},
                              {"logicalBaseDpi", 96},
                              {"dpr", 1}};
        file.write(QJsonDocument(QJsonObject{{"screens", QJsonArray{one}}}).toJson());
        file.close();
        platform_ = "offscreen:configfile=" + path.toStdString();
        arguments_ = {program_.data(), option_.data(), platform_.data(), nullptr};
        application_ = std::make_unique<QApplication>(argumentCount_, arguments_.data());
    }
    OffscreenQt(const OffscreenQt&) = delete;
    OffscreenQt& operator=(const OffscreenQt&) = delete;
    // DeferredDelete events are only processed by a running loop.
    ~OffscreenQt() { QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

  private:
    QTemporaryDir folder_;
    std::string program_ = "test";
    std::string option_ = "-platform";
    std::string platform_;
    int argumentCount_ = 3;
    std::array<char*, 4> arguments_{};
    std::unique_ptr<QApplication> application_;
};

QAccessibleInterface* accessible(QWidget& widget) {
    return QAccessible::queryAccessibleInterface(&widget);
}

/// What is read out: the label’s name where there is one.
std::string name(QWidget& widget) {
    const auto labels = accessible(widget)->relations(QAccessible::Label);
    const auto* named = labels.empty() ? accessible(widget) : labels.front().first;
    return named->text(QAccessible::Name).toStdString();
}

/// The Alt key of a title as Qt has it.
std::optional<QChar> mnemonicIn(const QString& title) {
    for (qsizetype i = 0; i + 1 < title.size(); ++i) {
        if (title[i] != u'&') continue;
        if (title[i + 1] != u'&') return title[i + 1].toLower();
        ++i;
    }
    return std::nullopt;
}

/// The real windows over a computer of fakes, used by the names that assistive technology reads.
struct Windows : FakeComputer {
    explicit Windows(QSize screen) : qt(screen) {
        words = &linuxWords;
        application = std::make_unique<UnlockApplication>(
            platform(), resources(), windows, UnlockApplication::Hooks{.log = {}, .terminate = {}});
    }

    QWidget& window() {
        for (QWidget* widget : QApplication::topLevelWidgets())
            if (widget->isVisible() && !widget->windowTitle().isEmpty()) return *widget;
        throw std::runtime_error("no window is open");
    }
    [[nodiscard]] std::vector<QWidget*> controls() {
        std::vector<QWidget*> found;
        // What a new page added is shown by the loop.
        QApplication::processEvents();
        for (auto* widget : window().findChildren<QWidget*>())
            if (widget->isVisible() && widget->window() == &window() &&
                (widget->focusPolicy() & Qt::TabFocus) != 0)
                found.push_back(widget);
        return found;
    }
    void reopen() {
        application->shouldHandleReopen();
        mainThread.advance(TimeInterval(0.7));
        settle();
    }
    /// Presses or toggles, as a screen reader does.
    bool act(const std::string& wanted) {
        for (QWidget* control : controls()) {
            auto* actions = accessible(*control)->actionInterface();
            if (name(*control) != wanted || !control->isEnabled() || actions == nullptr) continue;
            actions->doAction(actions->actionNames().front());
            // A button stays down for a moment first.
            const QPointer<QAbstractButton> button(dynamic_cast<QAbstractButton*>(control));
            while (button && button->isDown())
                QApplication::processEvents(QEventLoop::WaitForMoreEvents);
            settle();
            return true;
        }
        return false;
    }
    void type(const char* text) {
        QTest::keyClicks(
            QApplication::focusWidget() ? QApplication::focusWidget() : window().focusWidget(),
            text);
    }

    OffscreenQt qt;
    QtApplicationWindows windows;
    std::unique_ptr<UnlockApplication> application;
};

void expectNamed(Windows& computer) {
    std::set<std::string> names;
    for (QWidget* control : computer.controls()) {
        const auto* object = accessible(*control);
        EXPECT_FALSE(name(*control).empty()) << control->metaObject()->className();
        EXPECT_TRUE(names.insert(name(*control)).second) << name(*control) << " is there twice";
        const auto role = object->role();
        const bool isTitled = role == QAccessible::Button || name(*control) == "Log";
        EXPECT_EQ(object->relations(QAccessible::Label).size(), isTitled ? 0 : 1) << name(*control);
    }
}

void expectOwnKeys(Windows& computer) {
    std::vector<QString> titles;
    for (const auto* button : computer.window().findChildren<QPushButton*>())
        if (button->isVisible()) titles.push_back(button->text());
    for (const auto* label : computer.window().findChildren<QLabel*>())
        if (label->isVisible() && label->buddy() != nullptr) titles.push_back(label->text());
    std::set<QChar> keys;
    for (const QString& title : titles) {
        const auto key = mnemonicIn(title);
        EXPECT_TRUE(!key || keys.insert(*key).second) << title.toStdString();
    }
    // The settings have more controls than letters.
    for (const QString& title : titles) {
        EXPECT_TRUE(mnemonicIn(title) ||
                    std::ranges::all_of(title,
                                        [&](QChar letter) {
                                            return !letter.isLetterOrNumber() ||
                                                   keys.contains(letter.toLower());
                                        }))
            << title.toStdString();
    }
}

void expectUsable(Windows& computer, QSize screen) {
    const auto controls = computer.controls();
    QWidget& window = computer.window();
    EXPECT_LE(window.height() + 40, screen.height()) << "with its title bar";
    EXPECT_TRUE(QRect({}, screen).contains(window.frameGeometry()));
    auto& scroll = *window.findChild<QScrollArea*>();
    for (QWidget* control : controls) {
        const bool isRow = scroll.isAncestorOf(control);
        if (isRow) scroll.ensureWidgetVisible(control, 0, 0);
        const QRect wanted = control->height() <= scroll.viewport()->height() || !isRow
                                 ? control->rect()
                                 : QRect(0, 0, control->width(), 1);
        EXPECT_TRUE((QRegion(wanted) - control->visibleRegion()).isEmpty())
            << name(*control) << " is cut off";
    }
    for (const auto* label : window.findChildren<QLabel*>()) {
        EXPECT_TRUE(!label->isVisible() || label->height() >= label->heightForWidth(label->width()))
            << label->text().toStdString() << " is cut off";
    }
    const int unused = scroll.viewport()->height() - scroll.widget()->childrenRect().height();
    EXPECT_TRUE(unused <= 40 || window.height() == window.minimumHeight()) << unused;
}

struct WindowsTest : testing::TestWithParam<QSize> {
    Windows computer{GetParam()};

    ~WindowsTest() override { useCatalogue(nullptr); }

    void expectGoodPage(const std::string& title) {
        SCOPED_TRACE(title);
        EXPECT_EQ(computer.window().windowTitle().toStdString(), title);
        expectNamed(computer);
        expectOwnKeys(computer);
        expectUsable(computer, GetParam());
    }
    void walkThroughWelcome() {
        computer.reopen();
        expectGoodPage(translated("Welcome to Marrowby Unlock"));
        EXPECT_TRUE(computer.act(translated("Continue")));
        expectGoodPage(translated("What it keeps, and how safe it is"));
        EXPECT_FALSE(computer.act(translated("Continue")));
        EXPECT_TRUE(computer.act(translated("I understand")));
        computer.enrollmentCamera->answer = CaptureAuthorization::denied;
        EXPECT_TRUE(computer.act(translated("Continue")));
        expectGoodPage(translated("Allow the camera"));
        computer.enrollmentCamera->answer = CaptureAuthorization::authorized;
        computer.keyEvents.trusted = false;
        computer.mainThread.advance(TimeInterval(2));
        expectGoodPage(translated("Allow typing your password"));
        computer.keyEvents.trusted = true;
        computer.mainThread.advance(TimeInterval(2));
        computer.see(0, 0);
        expectGoodPage(translated("Save your face"));
        computer.holdAllPoses();
        computer.type("Anna");
        expectGoodPage(translated("Name this look"));
        EXPECT_TRUE(computer.act(translated("Continue")));
        computer.type("secret");
        expectGoodPage(
            translated("Save your {password}", {{"password", linuxWords.password.inSentence}}));
        EXPECT_TRUE(computer.act(translated("Continue")));
        expectGoodPage(translated("When should it look for you?"));
        EXPECT_TRUE(computer.act(translated("Continue")));
        expectGoodPage(translated("That’s it"));
        EXPECT_TRUE(computer.act(translated("Done")));
    }
    /// Through every page, in the language of the catalogue in use.
    void walkThroughAll() {
        walkThroughWelcome();
        computer.reopen();
        expectGoodPage("Marrowby Unlock");
        EXPECT_TRUE(computer.act(translated("Unlock with your face")));
        EXPECT_FALSE(computer.application->model().settings().isEnabled);
        EXPECT_TRUE(computer.act(translated("Show what it does at the lock screen")));
        EXPECT_FALSE(computer.application->model().settings().showsAnimation);
        const Filling name("name", std::string("Anna"));
        EXPECT_TRUE(computer.act(translated("Remove “{name}”…", {name})));
        expectGoodPage(translated("Remove “{name}”?", {name}));
        EXPECT_TRUE(computer.act(translated("Cancel")));
        EXPECT_TRUE(computer.act(translated("Rename “{name}”…", {name})));
        expectGoodPage(translated("Rename “{name}”", {name}));
        EXPECT_TRUE(computer.act(translated("Cancel")));
        EXPECT_TRUE(computer.act(translated("Erase Everything…")));
        expectGoodPage(translated("Erase everything?"));
    }
};

/// The trial's page, which the fakes have no models for.
class TryPresenter final : public WindowPresenter {
  public:
    [[nodiscard]] WindowPage page() const override {
        ScanInsight insight{
            .picture = *Bitmap::create(2, 2, 8, rgbx8, std::vector<std::uint8_t>(16)),
            .face = Rect{},
            .likenesses = {{"Anna", 0.7F, true}}};
        for (const LivenessCue cue : allLivenessCues)
            insight.cues.push_back({.cue = cue, .level = 0.4F, .limit = 0.5F});
        return tryPage({.insight = insight, .result = {}});
    }
    void press(ControlID /*id*/) override {}
    void toggle(ControlID /*id*/, bool /*isOn*/) override {}
    void choose(ControlID /*id*/, std::size_t /*option*/) override {}
    void enter(ControlID /*id*/, std::string /*text*/) override {}
    void enter(ControlID /*id*/, SecretBytes /*secret*/) override {}
    void windowClosed() override {}
};

TEST_P(WindowsTest, showsATrialOnAnyScreen) {
    TryPresenter trial;
    computer.windows.show(UnlockOpening::Window::settings, trial);
    computer.windows.refresh(UnlockOpening::Window::settings);
    expectGoodPage("Try it");
    for (const auto* bar : computer.window().findChildren<QProgressBar*>())
        EXPECT_FALSE(bar->accessibleName().isEmpty());
    computer.windows.close(UnlockOpening::Window::settings);
}

TEST_P(WindowsTest, canBeUsedByNameOnEveryPage) {
    walkThroughAll();
}

/// Longer words, and the other way round.
TEST_P(WindowsTest, holdGermanTextsFromRightToLeft) {
    setenv("LC_ALL", "C.UTF-8", 1);
    setenv("LANGUAGE", "de", 1);
    const GettextCatalogue german(
        GettextCatalogue::folderFor(std::filesystem::read_symlink("/proc/self/exe")));
    useCatalogue(&german);
    ASSERT_EQ(translated("Continue"), "Weiter");
    QApplication::setLayoutDirection(Qt::RightToLeft);
    walkThroughAll();
    EXPECT_TRUE(computer.act(translated("Cancel")));
    for (const QWidget* control : computer.controls()) {
        const auto* button = dynamic_cast<const QAbstractButton*>(control);
        if (button == nullptr || !button->isCheckable()) continue;
        EXPECT_LT(button->mapTo(&computer.window(), QPoint()).x(), computer.window().width() / 2)
            << "a switch stands at its title’s end";
    }
    const QString folder = qEnvironmentVariable("MARROWBY_PICTURES");
    if (!folder.isEmpty()) computer.window().grab().save(folder + "/settings-from-the-right.png");
    unsetenv("LANGUAGE");
    unsetenv("LC_ALL");
    std::setlocale(LC_ALL, "C");
}

// The last is 1366 × 768 at two pixels a point.
INSTANTIATE_TEST_SUITE_P(Screens, WindowsTest,
                         testing::Values(QSize(1920, 1080), QSize(1024, 600), QSize(683, 384)));

TEST(WindowTest, keepTheSizeThatTheUserGaveThem) {
    Windows computer({1280, 800});
    computer.reopen();
    const auto resize = [&](QSize size) {
        computer.window().windowHandle()->resize(size);
        QApplication::processEvents();
    };
    const QSize welcome = computer.window().size();
    EXPECT_LT(welcome.height(), 300) << "a page of few rows";
    resize(welcome + QSize(1, 1));
    EXPECT_TRUE(computer.act("Continue"));
    const QSize security = computer.window().size();
    EXPECT_GT(security.height(), welcome.height() + 50) << "a scale’s rounding is no wish";
    resize(welcome);
    EXPECT_TRUE(computer.act("Back"));
    EXPECT_TRUE(computer.act("Continue"));
    EXPECT_EQ(computer.window().size(), security) << "nor is a size that came late";
    resize({700, 500});
    EXPECT_TRUE(computer.act("Back"));
    EXPECT_EQ(computer.window().size(), QSize(700, 500));
}

TEST(WindowTest, letAPageThatOnlyTellsBeReadWithTheKeys) {
    Windows computer({500, 320});
    computer.reopen();
    EXPECT_TRUE(computer.act("Continue"));
    const QScrollBar& bar = *computer.window().findChild<QScrollArea*>()->verticalScrollBar();
    ASSERT_GT(bar.maximum(), 0);
    QTest::keyClick(&computer.window(), Qt::Key_PageDown);
    EXPECT_GT(bar.value(), 0);
}

/// What it is to see of a button; drawn by Qt's own style.
TEST(WindowTest, tellTheFocusedButtonFromTheDefaultOne) {
    Windows computer({1280, 800});
    computer.reopen();
    EXPECT_TRUE(computer.act("Continue"));
    QApplication::setActiveWindow(&computer.window());
    const auto picture = [&](const char* wanted, bool isDefault, bool hasFocus) {
        for (QWidget* control : computer.controls()) {
            auto* button = dynamic_cast<QPushButton*>(control);
            if (button == nullptr || name(*button) != wanted) continue;
            button->setEnabled(true);
            button->setDefault(isDefault);
            hasFocus ? button->setFocus(Qt::TabFocusReason) : button->clearFocus();
            return button->grab().toImage();
        }
        throw std::runtime_error("no such button");
    };
    const QImage plain = picture("Back", false, false);
    EXPECT_NE(picture("Back", false, true), plain);
    EXPECT_NE(picture("Back", true, false), plain);
    EXPECT_NE(picture("Back", true, false), picture("Back", false, true));
    EXPECT_NE(picture("Back", true, true), picture("Back", true, false));
}

}  // namespace
}  // namespace marrowby
