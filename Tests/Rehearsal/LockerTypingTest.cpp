#include "Platforms/Linux/XKeyLayout.h"
#include "Platforms/Linux/XTestKeyEvents.h"
#include "Platforms/Linux/XcbConnection.h"
#include "Rehearsal/ChildProcess.h"
#include "Rehearsal/PrivateDesktop.h"
#include "Rehearsal/ScreenLocker.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

constexpr std::chrono::seconds limit{20};
constexpr std::uint32_t capsLock = 0xFFE5;
constexpr std::uint32_t rightShift = 0xFFE2;

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// A real locker under a private X server, and the application's own way of typing into it.
class LockerTyping : public testing::Test {
  protected:
    void SetUp() override {
        auto created = PrivateDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop_ = std::make_unique<PrivateDesktop>(std::move(*created));
        locker_ = std::make_unique<ScreenLocker>(desktop_->displayName());
        keyEvents_ = std::make_unique<XTestKeyEvents>(desktop_->displayName());
        auto connection = XcbConnection::create(desktop_->displayName());
        ASSERT_TRUE(connection);
        connection_ = std::move(*connection);
    }

    /// Skips where no locker can run.
    void lock(std::string_view password) {
        const auto locked = locker_->lock(password);
        if (!locked) GTEST_SKIP() << "Skipped: " << locked.error();
    }

    [[nodiscard]] std::expected<void, KeystrokeError> type(std::string_view password) {
        return keystrokeinjector::typePassword(*keyEvents_, bytesOf(password),
                                               [this] { return locker_->isRunning(); })
            .outcome();
    }

    [[nodiscard]] bool isUnlockedInTime() const {
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (locker_->isRunning() && std::chrono::steady_clock::now() < deadline) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents,
                                            100);
        }
        return !locker_->isRunning();
    }

    void press(std::uint32_t keysym, bool isReleased) const {
        const auto source = keyEvents_->makeSource({}, std::array{keysym});
        ASSERT_TRUE(source);
        ASSERT_TRUE(source->post({.code = keysym, .down = true}));
        if (isReleased) {
            ASSERT_TRUE(source->post({.code = keysym, .down = false}));
        }
    }

    void setLayout(const std::string& layout) const {
        const auto setting =
            ChildProcess::start({.arguments = {"setxkbmap", "-layout", layout},
                                 .environment = {"DISPLAY=" + desktop_->displayName()}});
        if (!setting) GTEST_SKIP() << "Skipped: " << setting.error();
        ASSERT_TRUE(setting->waitEnded(TimeInterval(limit)));
    }

    /// Every key's symbols, and the modifiers that are locked.
    [[nodiscard]] std::vector<xcb_keysym_t> keyboard() const {
        const xcb_keycode_t first = xcb_get_setup(connection_->get())->min_keycode;
        const auto mapping =
            connection_->reply<xcb_get_keyboard_mapping_reply>(xcb_get_keyboard_mapping(
                connection_->get(), first, static_cast<std::uint8_t>(256 - first)));
        const auto layout = XKeyLayout::read(*connection_);
        if (!mapping || !layout) return {};
        const auto keysyms = std::span(
            xcb_get_keyboard_mapping_keysyms(mapping.get()),
            static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get())));
        std::vector<xcb_keysym_t> all(keysyms.begin(), keysyms.end());
        all.push_back(layout->lockedModifiers());
        return all;
    }

    std::unique_ptr<PrivateDesktop> desktop_;
    std::unique_ptr<ScreenLocker> locker_;
    std::unique_ptr<XTestKeyEvents> keyEvents_;
    std::unique_ptr<XcbConnection> connection_;

  private:
    int argumentCount_ = 1;
    std::string name_ = "RehearsalTests";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_.data()};
};

struct Password {
    const char* name;
    const char* text;
    friend void PrintTo(const Password& password, std::ostream* out) { *out << password.name; }
};

class LockerTypingOf : public LockerTyping, public testing::WithParamInterface<Password> {};

TEST_P(LockerTypingOf, unlocksAndGivesTheKeyboardBack) {
    ASSERT_NO_FATAL_FAILURE(lock(GetParam().text));
    if (IsSkipped()) return;
    const auto before = keyboard();
    ASSERT_FALSE(before.empty());
    EXPECT_TRUE(type(GetParam().text));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

INSTANTIATE_TEST_SUITE_P(Passwords, LockerTypingOf,
                         testing::Values(Password{"asciiMixedCaseAndSymbols",
                                                  "Tr0ub4dor&3 $`'\"\\{}~^"},
                                         Password{"fortyFiveCharacters",
                                                  "Sphinx of black quartz, judge my vow: 4 Panda"},
                                         Password{"beyondAscii", "é ß ž字😀"}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(LockerTyping, keepsTheLockAfterAWrongPasswordAndClearsWhatTheFieldHolds) {
    bool hasEnded = false;
    locker_->onEnded([&] { hasEnded = true; });
    ASSERT_NO_FATAL_FAILURE(lock("Right 1"));
    if (IsSkipped()) return;
    EXPECT_TRUE(type("Wrong 1"));
    EXPECT_TRUE(locker_->isRunning());

    // Left over from somebody who began to type.
    const std::u16string leftOver = u"leftover";
    const auto source = keyEvents_->makeSource(leftOver, {});
    ASSERT_TRUE(source);
    ASSERT_TRUE(source->postText(leftOver, true));
    EXPECT_TRUE(type("Right 1"));
    EXPECT_TRUE(isUnlockedInTime());
    QCoreApplication::processEvents();
    EXPECT_TRUE(hasEnded);

    ASSERT_NO_FATAL_FAILURE(lock("Other 2"));
    EXPECT_TRUE(type("Right 1"));
    EXPECT_TRUE(locker_->isRunning());
}

TEST_F(LockerTyping, typesThroughCapsLockAndAHeldShift) {
    ASSERT_NO_FATAL_FAILURE(press(capsLock, true));
    ASSERT_NO_FATAL_FAILURE(press(rightShift, false));
    ASSERT_NO_FATAL_FAILURE(lock("caps Éé 1!"));
    if (IsSkipped()) return;
    const auto before = keyboard();
    EXPECT_NE(before.back(), 0U);
    EXPECT_TRUE(type("caps Éé 1!"));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

TEST_F(LockerTyping, typesWhereTheLayoutHasNoLatinLetters) {
    ASSERT_NO_FATAL_FAILURE(setLayout("ru"));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(lock("Пароль u 1"));
    if (IsSkipped()) return;
    const auto before = keyboard();
    EXPECT_TRUE(type("Пароль u 1"));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

TEST_F(LockerTyping, hasNoSourceForTextBeyondItsKeysOrADisplayThatIsGone) {
    const auto before = keyboard();
    const std::u16string tooMany = u"ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    EXPECT_FALSE(keyEvents_->makeSource(tooMany, {}));
    const std::u16string control = u"a\nb";
    EXPECT_FALSE(keyEvents_->makeSource(control, {}));
    EXPECT_EQ(keyboard(), before);
    EXPECT_TRUE(keyEvents_->isTrusted());

    const std::u16string text = u"Ab";
    const auto source = keyEvents_->makeSource(text, {});
    ASSERT_TRUE(source);
    desktop_.reset();
    EXPECT_FALSE(source->postText(text, true));
    EXPECT_FALSE(keyEvents_->isTrusted());
    EXPECT_FALSE(keyEvents_->makeSource(text, {}));
}

}  // namespace
}  // namespace marrowby
