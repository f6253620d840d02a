// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/ClientPrograms.h"
#include "Platforms/Linux/X11/XKeyLayout.h"
#include "Platforms/Linux/X11/XLentKeys.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/DesktopUser.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Fakes/BytesOf.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"
#include "UnlockCore/Platform/LockerTiming.h"

#include <QCoreApplication>
#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

constexpr std::chrono::seconds limit{20};
constexpr std::uint32_t capsLock = 0xFFE5;
constexpr std::uint32_t rightShift = 0xFFE2;

/// Another user's keyboard, made for one test.
class SecondKeyboard {
  public:
    explicit SecondKeyboard(const XcbConnection& connection) : connection_(connection) {
        constexpr std::string_view name = "hands";
        std::array<std::uint8_t, 16> change{};
        const xcb_input_add_master_t head{.type = XCB_INPUT_HIERARCHY_CHANGE_TYPE_ADD_MASTER,
                                          .len = change.size() / 4,
                                          .name_len = name.size(),
                                          .send_core = 1,
                                          .enable = 1};
        std::memcpy(change.data(), &head, sizeof head);
        std::ranges::copy(name, change.begin() + sizeof head);
        xcb_input_xi_query_version(connection.get(), 2, 2);
        xcb_input_xi_change_hierarchy(
            connection.get(), 1,
            reinterpret_cast<const xcb_input_hierarchy_change_t*>(change.data()));
        const auto devices = connection.reply<xcb_input_xi_query_device_reply>(
            xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL));
        for (auto infos = xcb_input_xi_query_device_infos_iterator(devices.get()); infos.rem > 0;
             xcb_input_xi_device_info_next(&infos)) {
            const std::string_view found(
                xcb_input_xi_device_info_name(infos.data),
                static_cast<std::size_t>(xcb_input_xi_device_info_name_length(infos.data)));
            if (found == "hands XTEST keyboard")
                device_ = static_cast<std::uint8_t>(infos.data->deviceid);
        }
    }

    void tap() const {
        const auto first = xcb_get_extension_data(connection_.get(), &xcb_input_id)->first_event;
        for (const int type : {XCB_INPUT_DEVICE_KEY_PRESS, XCB_INPUT_DEVICE_KEY_RELEASE}) {
            xcb_test_fake_input(connection_.get(), static_cast<std::uint8_t>(first + type), 38,
                                XCB_CURRENT_TIME, XCB_NONE, 0, 0, device_);
        }
        (void)connection_.atom("done");
    }

  private:
    const XcbConnection& connection_;
    std::uint8_t device_ = 0;
};

/// A window that counts the keys that come to it.
class RecordingWindow {
  public:
    explicit RecordingWindow(const XcbConnection& connection)
        : connection_(connection), window_(xcb_generate_id(connection.get())) {
        const std::uint32_t events = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE;
        xcb_create_window(connection.get(), XCB_COPY_FROM_PARENT, window_, connection.root(), 0, 0,
                          100, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                          XCB_CW_EVENT_MASK, &events);
        xcb_map_window(connection.get(), window_);
        (void)connection.atom("done");
    }
    void takeFocus() const {
        xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_POINTER_ROOT, window_,
                            XCB_CURRENT_TIME);
        (void)connection_.atom("done");
    }
    /// Above all windows, unmanaged, with the keyboard.
    void cover() const {
        const auto& screen = connection_.screen();
        const std::uint32_t unmanaged = 1;
        xcb_unmap_window(connection_.get(), window_);
        xcb_change_window_attributes(connection_.get(), window_, XCB_CW_OVERRIDE_REDIRECT,
                                     &unmanaged);
        const std::uint32_t size[] = {screen.width_in_pixels, screen.height_in_pixels};
        xcb_configure_window(connection_.get(), window_,
                             XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, size);
        xcb_map_window(connection_.get(), window_);
        (void)connection_.reply<xcb_grab_keyboard_reply>(
            xcb_grab_keyboard(connection_.get(), 0, window_, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                              XCB_GRAB_MODE_ASYNC));
    }
    [[nodiscard]] int keyCount() const {
        (void)connection_.atom("done");
        int count = 0;
        while (const XcbConnection::Owned<xcb_generic_event_t> event{
            xcb_poll_for_event(connection_.get())}) {
            const int type = event->response_type & 0x7F;
            count += type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE ? 1 : 0;
        }
        return count;
    }

  private:
    const XcbConnection& connection_;
    xcb_window_t window_;
};

/// A real locker under a private X server, and the application's own way of typing into it.
class LockerTyping : public testing::Test {
  protected:
    void SetUp() override {
        auto created = PrivateDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop_ = std::make_unique<PrivateDesktop>(std::move(*created));
        useLocker(ScreenLocker::Kind::i3lock);
        keyEvents_ = std::make_unique<XTestKeyEvents>(desktop_->displayName());
        auto connection = XcbConnection::create(desktop_->displayName());
        ASSERT_TRUE(connection);
        connection_ = std::move(*connection);
        auto somebody = DesktopUser::create(desktop_->displayName());
        ASSERT_TRUE(somebody);
        somebody_.emplace(*std::move(somebody));
    }

    void useLocker(ScreenLocker::Kind kind) {
        locker_ = std::make_unique<ScreenLocker>(desktop_->displayName(), kind);
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
    std::optional<DesktopUser> somebody_;

  private:
    int argumentCount_ = 1;
    std::string name_ = "RehearsalTests";
    std::array<char*, 2> arguments_{name_.data(), nullptr};
    QCoreApplication application_{argumentCount_, arguments_.data()};
};

struct Case {
    const char* name;
    ScreenLocker::Kind locker;
    const char* layout;
    const char* password;
    friend void PrintTo(const Case& one, std::ostream* out) { *out << one.name; }
};

class LockerTypingOf : public LockerTyping, public testing::WithParamInterface<Case> {};

TEST_P(LockerTypingOf, unlocksAndRestoresTheKeyboard) {
    const Case& one = GetParam();
    useLocker(one.locker);
    ASSERT_NO_FATAL_FAILURE(setLayout(one.layout));
    if (IsSkipped()) return;
    ASSERT_NO_FATAL_FAILURE(lock(one.password));
    if (IsSkipped()) return;
    const auto before = keyboard();
    ASSERT_FALSE(before.empty());
    EXPECT_TRUE(type(one.password));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

constexpr auto i3lock = ScreenLocker::Kind::i3lock;
constexpr auto xsecurelock = ScreenLocker::Kind::xsecurelock;

INSTANTIATE_TEST_SUITE_P(
    Everywhere, LockerTypingOf,
    testing::Values(Case{"asciiOnI3lock", i3lock, "us", "Tr0ub4dor&3 $`'\"\\{}~^"},
                    Case{"fortyFiveOnGermanI3lock", i3lock, "de",
                         "Sphinx of black quartz, judge my vow: 4 yZ@/|"},
                    Case{"beyondAsciiOnFrenchI3lock", i3lock, "fr", "é ß ž字😀 aqQ1!"},
                    Case{"cyrillicOnRussianI3lock", i3lock, "ru", "Пароль u 1"},
                    Case{"beyondAsciiOnI3lockInTheBackground",
                         ScreenLocker::Kind::i3lockInBackground, "us", "é Z 字 yZ"},
                    Case{"asciiOnRussianXsecurelock", xsecurelock, "ru", "Tr0ub4dor&3 `'{}~^"},
                    Case{"asciiOnFrenchXsecurelock", xsecurelock, "fr", "Tr0ub4dor&3 $`'\"\\{}~^"},
                    Case{"fortyFiveOnXsecurelock", xsecurelock, "us",
                         "Sphinx of black quartz, judge my vow: 4 Panda"},
                    Case{"beyondAsciiOnGermanXsecurelock", xsecurelock, "de", "é ß ž字😀 Пар yZ"}),
    [](const auto& test) { return std::string(test.param.name); });

class LockerTypingAfterAMistake : public LockerTyping, public testing::WithParamInterface<Case> {};

TEST_P(LockerTypingAfterAMistake, unlocksALockerThatHasJustRefusedSomebodysPassword) {
    const Case& one = GetParam();
    useLocker(one.locker);
    ASSERT_NO_FATAL_FAILURE(lock(one.password));
    if (IsSkipped()) return;
    keyEvents_->wakeField([&] { return locker_->isRunning(); });
    ASSERT_TRUE(somebody_->write("wrong"));
    ASSERT_TRUE(somebody_->tap(XKB_KEY_Return));
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (locker_->refusals() == 0 && std::chrono::steady_clock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    ASSERT_EQ(locker_->refusals(), 1U);
    EXPECT_TRUE(type(one.password));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(locker_->refusals(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Everywhere, LockerTypingAfterAMistake,
    testing::Values(Case{"i3lock", i3lock, "us", "Right 1"},
                    Case{"xsecurelock", xsecurelock, "us", "Right 1"},
                    Case{"xscreensaver", ScreenLocker::Kind::xscreensaver, "us", "Right 1"},
                    Case{"mateScreensaver", ScreenLocker::Kind::mateScreensaver, "us", "Right 1"}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(LockerTyping, lendsKeysUntilADialogThatIsSecondsLateHasReadThem) {
    useLocker(ScreenLocker::Kind::xscreensaver);
    ASSERT_NO_FATAL_FAILURE(lock("Späte ß 字"));
    if (IsSkipped()) return;
    pid_t dialog = 0;
    int waits = 0;
    const int wakes =
        static_cast<int>(lockertiming::returningLimit / lockertiming::returningStep) + 50;
    XTestKeyEvents keyEvents(desktop_->displayName(), [&](TimeInterval duration) {
        if (duration != lockertiming::returningStep || waits > wakes)
            XTestKeyEvents::sleep(duration);
        else if (++waits > wakes)
            ::kill(dialog, SIGCONT);
    });
    const auto isLocked = [&] { return locker_->isRunning(); };
    keyEvents.wakeField(isLocked);
    const ClientPrograms programs(*connection_);
    for (const auto client : programs.clients()) {
        const auto program = programs.behind(client);
        if (program && program->name.starts_with("xscreensaver-au"))
            dialog = static_cast<pid_t>(program->process);
    }
    ASSERT_NE(dialog, 0);
    EXPECT_TRUE(keystrokeinjector::typePassword(keyEvents, bytesOf("Späte ß 字"), isLocked, [&] {
                    ::kill(dialog, SIGSTOP);
                }).outcome());
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(locker_->refusals(), 0U);
}

TEST_F(LockerTyping, stopsWhenSomebodyElseTypes) {
    ASSERT_NO_FATAL_FAILURE(lock("right"));
    if (IsSkipped()) return;
    const SecondKeyboard hands(*connection_);
    // Counted from the first key on: how many come before depends on how busy the locker is.
    std::optional<int> checks;
    const auto typing = keystrokeinjector::typePassword(
        *keyEvents_, bytesOf("right, but more than twenty characters"),
        [&] {
            // Before the second chunk.
            if (checks && ++*checks == 3) hands.tap();
            return locker_->isRunning();
        },
        [&] { checks = 0; });
    EXPECT_EQ(typing.outcome(), std::unexpected(KeystrokeError::notLocked));
    EXPECT_LE(checks.value_or(5), 4);
    EXPECT_TRUE(locker_->isRunning());
}

TEST_F(LockerTyping, stopsWhenTheLockerIsAnother) {
    ASSERT_NO_FATAL_FAILURE(lock("right"));
    if (IsSkipped()) return;
    std::optional<int> checks;
    const auto typing = keystrokeinjector::typePassword(
        *keyEvents_, bytesOf("right"),
        [&] {
            if (checks && ++*checks == 2) {
                locker_->kill();
                EXPECT_TRUE(locker_->lock("right"));
            }
            return locker_->isRunning();
        },
        [&] { checks = 0; });
    EXPECT_EQ(typing.outcome(), std::unexpected(KeystrokeError::notLocked));
    EXPECT_TRUE(locker_->isRunning());
}

TEST_F(LockerTyping, sendsNoKeyToAWindowFocusedAfterAnUnlock) {
    ASSERT_NO_FATAL_FAILURE(lock("right"));
    if (IsSkipped()) return;
    const RecordingWindow window(*connection_);
    std::optional<int> checks;
    const auto typing = keystrokeinjector::typePassword(
        *keyEvents_, bytesOf("forty characters, which make two chunks."),
        [&] {
            // Unlocked by other means between the two chunks.
            if (checks && ++*checks == 3) {
                locker_->kill();
                window.takeFocus();
            }
            return locker_->isRunning();
        },
        [&] { checks = 0; });
    EXPECT_EQ(typing.outcome(), std::unexpected(KeystrokeError::notLocked));
    EXPECT_EQ(checks, 3);
    EXPECT_EQ(window.keyCount(), 0);
}

TEST_F(LockerTyping, keepsTheLockAfterAWrongPasswordAndClearsWhatTheFieldHolds) {
    bool hasEnded = false;
    locker_->onEnded([&] { hasEnded = true; });
    ASSERT_NO_FATAL_FAILURE(lock("Right 1"));
    if (IsSkipped()) return;
    EXPECT_TRUE(type("Wrong 1"));
    EXPECT_TRUE(locker_->isRunning());

    // Left in the field by an aborted typing.
    ASSERT_TRUE(somebody_->write("leftover"));
    EXPECT_TRUE(type("Right 1"));
    EXPECT_TRUE(isUnlockedInTime());
    QCoreApplication::processEvents();
    EXPECT_TRUE(hasEnded);

    ASSERT_NO_FATAL_FAILURE(lock("Other 2"));
    EXPECT_TRUE(type("Right 1"));
    EXPECT_TRUE(locker_->isRunning());
}

TEST_F(LockerTyping, typesThroughCapsLockAndAHeldShift) {
    ASSERT_TRUE(somebody_->tap(capsLock));
    ASSERT_TRUE(somebody_->press(rightShift, true));
    ASSERT_NO_FATAL_FAILURE(lock("caps Éé 1!"));
    if (IsSkipped()) return;
    const auto before = keyboard();
    EXPECT_NE(before.back(), 0U);
    EXPECT_TRUE(type("caps Éé 1!"));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

/// Another client that has grabbed these keys of the root window: a window manager, a hotkey
/// program, or an attacker.
class HotKeys {
  public:
    HotKeys(const std::string& displayName, std::span<const xcb_keycode_t> keys,
            std::uint16_t modifiers)
        : connection_(std::move(*XcbConnection::create(displayName))) {
        for (const auto key : keys) {
            xcb_grab_key(connection_->get(), 0, connection_->root(), modifiers, key,
                         XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
        }
        (void)connection_->atom("done");
    }

  private:
    std::unique_ptr<XcbConnection> connection_;
};

TEST_F(LockerTyping, typesDespiteKeysThatOthersHaveGrabbed) {
    const auto layout = XKeyLayout::read(*connection_);
    ASSERT_TRUE(layout);
    const std::array letters{*layout->key('a'), *layout->key('b'), *layout->key(XKB_KEY_Return)};
    const HotKeys windowManager(desktop_->displayName(), letters, XCB_MOD_MASK_4);
    const HotKeys plain(desktop_->displayName(), std::span(letters).subspan(1), 0);
    ASSERT_NO_FATAL_FAILURE(lock("abc"));
    if (IsSkipped()) return;
    const auto before = keyboard();
    EXPECT_TRUE(type("abc"));
    EXPECT_TRUE(isUnlockedInTime());
    EXPECT_EQ(keyboard(), before);
}

TEST_F(LockerTyping, typesNothingWhereAnotherHasGrabbedEveryKey) {
    const std::array any{xcb_keycode_t{XCB_GRAB_ANY}};
    const HotKeys everything(desktop_->displayName(), any, XCB_MOD_MASK_ANY);
    std::optional<LockerDoubt> doubt;
    keyEvents_->onDoubt = [&](const LockerDoubt& one) { doubt = one; };
    ASSERT_NO_FATAL_FAILURE(lock("abc"));
    if (IsSkipped()) return;
    EXPECT_EQ(type("abc"), std::unexpected(KeystrokeError::noLocker));
    EXPECT_EQ(doubt, LockerDoubt{.fact = LockerDoubt::Fact::keysAreReserved});
    EXPECT_TRUE(locker_->isRunning());
}

TEST_F(LockerTyping, typesNothingForAWindowThatOnlyLooksLocked) {
    const RecordingWindow window(*connection_);
    window.takeFocus();
    std::optional<LockerDoubt> doubt;
    keyEvents_->onDoubt = [&](const LockerDoubt& one) { doubt = one; };
    const auto typeIntoNothing = [&] {
        return keystrokeinjector::typePassword(*keyEvents_, bytesOf("right"), [] { return true; })
            .outcome();
    };
    EXPECT_EQ(typeIntoNothing(), std::unexpected(KeystrokeError::noLocker));
    EXPECT_EQ(doubt, LockerDoubt{.fact = LockerDoubt::Fact::keyboardIsFree});

    // Covers the screen unmanaged and holds the keyboard: everything of a locker but the
    // executable.
    window.cover();
    EXPECT_EQ(typeIntoNothing(), std::unexpected(KeystrokeError::noLocker));
    EXPECT_EQ(window.keyCount(), 2) << "the tapped Shift";
    ASSERT_TRUE(doubt);
    EXPECT_NE(doubt->fact, LockerDoubt::Fact::keyReachesNobody) << description(*doubt);
    EXPECT_TRUE(doubt->path.ends_with("RehearsalTests")) << doubt->path;
}

TEST_F(LockerTyping, restoresAtTheNextStartTheKeysThatAKilledProcessBorrowed) {
    const auto before = keyboard();
    const auto layout = XKeyLayout::read(*connection_);
    ASSERT_TRUE(layout);
    const auto key = layout->freeKeys().front();
    const auto hasCharacter = [&] { return XKeyLayout::read(*connection_)->key(XKB_KEY_Greek_pi); };
    auto killed = std::move(*XcbConnection::create(desktop_->displayName()));
    auto lent = std::make_unique<XLentKeys>(*killed);
    lent->note({key});
    lent->lend(key, XKB_KEY_Greek_pi);
    (void)killed->atom("done");
    // Not restored while the other process still types.
    EXPECT_TRUE(XTestKeyEvents(desktop_->displayName()).isTrusted());
    EXPECT_TRUE(hasCharacter());
    // As the end of the process closes its connection.
    ::shutdown(killed->fd(), SHUT_RDWR);
    lent.reset();
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (hasCharacter() && std::chrono::steady_clock::now() < deadline)
        EXPECT_TRUE(XTestKeyEvents(desktop_->displayName()).isTrusted());
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
