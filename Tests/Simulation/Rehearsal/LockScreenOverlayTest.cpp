// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Linux/Desktop/UnixClock.h"
#include "Platforms/Linux/X11/PanelPainter.h"
#include "Platforms/Linux/X11/X11LockState.h"
#include "Platforms/Linux/X11/X11WindowServer.h"
#include "Platforms/Linux/X11/XTestKeyEvents.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Simulation/Desktop/ChildProcess.h"
#include "Simulation/Desktop/DesktopUser.h"
#include "Simulation/Desktop/PrivateDesktop.h"
#include "Simulation/Desktop/ScreenLocker.h"
#include "Tests/Platforms/Linux/QtLoop.h"
#include "Unlock/Island/LockScreenOverlayController.h"
#include "Unlock/Linux/LinuxWords.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <QGuiApplication>
#include <QImage>
#include <csignal>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using Kind = ScreenLocker::Kind;

constexpr std::string_view password = "opens a door";

struct Scene {
    const char* name;
    Kind locker;
    bool hasCompositor;
    bool showsIsland;
    friend std::ostream& operator<<(std::ostream& out, const Scene& scene) {
        return out << scene.name;
    }
};

/// The island on a real display with a real locker.
struct LockScreenOverlay : testing::TestWithParam<Scene> {
    bool isOffscreen = qputenv("QT_QPA_PLATFORM", "offscreen");
    QtLoopOf<QGuiApplication> loop;
    QtMainThread mainThread;
    UnixSystemClock clock;
    std::optional<PrivateDesktop> desktop;
    std::unique_ptr<XcbConnection> connection;
    std::optional<DesktopUser> somebody;
    std::optional<ChildProcess> compositor;
    std::unique_ptr<ScreenLocker> locker;
    std::unique_ptr<XTestKeyEvents> user;
    std::unique_ptr<X11LockState> lockState;
    std::unique_ptr<X11WindowServer> server;
    std::unique_ptr<LockScreen> lockScreen;
    std::unique_ptr<LockScreenOverlayController> controller;

    void SetUp() override {
        auto created = PrivateDesktop::create();
        if (!created) GTEST_SKIP() << "Skipped: " << created.error();
        desktop.emplace(std::move(*created));
        connection = std::move(*XcbConnection::create(desktop->displayName()));
        somebody.emplace(std::move(*DesktopUser::create(desktop->displayName())));
        user = std::make_unique<XTestKeyEvents>(desktop->displayName());
        lockState = std::move(*X11LockState::create(desktop->displayName()));
        server = std::make_unique<X11WindowServer>(desktop->displayName());
        lockScreen = std::make_unique<LockScreen>(*server, *lockState);
        controller =
            std::make_unique<LockScreenOverlayController>(LockScreenOverlayController::Services{
                .lockScreen = *lockScreen, .mainThread = mainThread, .clock = clock});
    }

    [[nodiscard]] bool isLocked() const { return lockState->isLocked(); }

    void startCompositor() {
        auto started = ChildProcess::start(
            {.arguments = {"picom", "--config", "/dev/null", "--backend", "xrender"},
             .environment = {"DISPLAY=" + desktop->displayName()},
             .endSignal = SIGTERM});
        if (!started) GTEST_SKIP() << "Skipped: " << started.error();
        compositor.emplace(std::move(*started));
        ASSERT_TRUE(loop.runUntil([this] {
            const auto owner = connection->reply<xcb_get_selection_owner_reply>(
                xcb_get_selection_owner(connection->get(), connection->atom("_NET_WM_CM_S0")));
            return owner && owner->owner != XCB_NONE;
        }));
        // The locker paints the root window soon after.
        letPass(TimeInterval(0.5));
    }

    void letPass(TimeInterval time) {
        const Date begin = clock.now();
        ASSERT_TRUE(loop.runUntil([&] { return clock.now() - begin > time; }));
    }

    [[nodiscard]] QImage screen() const { return somebody->screen(); }

    [[nodiscard]] Rect panelFrame() const { return Island::frame(*server->mainScreen()); }

    /// The visible share of the island's opaque pixels at rest in this phase.
    [[nodiscard]] double visiblePart(const OverlayPhase& phase) const {
        const Rect frame = panelFrame();
        const QImage island = panelpainter::paint(
            Island{.phase = phase, .since = TimeInterval(10), .begin = {}, .notch = {}}.drawing(),
            {.width = frame.width, .height = frame.height}, 1);
        const QImage seen = screen();
        int opaque = 0;
        int visible = 0;
        for (int y = 0; y < island.height(); ++y) {
            for (int x = 0; x < island.width(); ++x) {
                if (qAlpha(island.pixel(x, y)) < 255) continue;
                ++opaque;
                const QRgb pixel = seen.pixel(int(frame.x) + x, int(frame.y) + y);
                visible += (pixel & RGB_MASK) == (island.pixel(x, y) & RGB_MASK) ? 1 : 0;
            }
        }
        return double(visible) / opaque;
    }

    /// Waits until the island is to be seen; where it never shall be, for as long as it would take.
    [[nodiscard]] bool comesToRest(const OverlayPhase& phase) {
        constexpr double nearlyAll = 0.99;
        if (GetParam().showsIsland)
            return loop.runUntil([&] { return visiblePart(phase) > nearlyAll; });
        letPass(TimeInterval(1));
        return visiblePart(phase) <= nearlyAll;
    }

    /// Everything but the panel.
    [[nodiscard]] QImage around(QImage picture) const {
        const Rect frame = panelFrame();
        for (int y = 0; y < int(frame.height); ++y) {
            for (int x = 0; x < int(frame.width); ++x)
                picture.setPixel(int(frame.x) + x, int(frame.y) + y, 0);
        }
        return picture;
    }

    /// In the middle, so far below the upper edge. The island lies at 20.
    void pointAt(double y) const { somebody->pointAt({.x = panelFrame().centre().x, .y = y}); }
    /// The window that a click goes to.
    [[nodiscard]] xcb_window_t pointedAt() const {
        const auto pointer = connection->reply<xcb_query_pointer_reply>(
            xcb_query_pointer(connection->get(), connection->root()));
        return pointer ? pointer->child : XCB_NONE;
    }

    void unlock() {
        const auto typed =
            keystrokeinjector::typePassword(
                *user, {reinterpret_cast<const std::uint8_t*>(password.data()), password.size()},
                [this] { return isLocked(); })
                .outcome();
        EXPECT_TRUE(typed) << description(typed.error(), linuxWords);
    }
};

TEST_P(LockScreenOverlay, liesAboveTheLockerWithoutDisturbingIt) {
    if (GetParam().hasCompositor) startCompositor();
    if (IsSkipped() || HasFatalFailure()) return;
    // Before the lock: lockers react to the pointer.
    pointAt(20);
    const QImage before = screen();
    locker = std::make_unique<ScreenLocker>(desktop->displayName(), GetParam().locker);
    if (const auto locked = locker->lock(password); !locked)
        GTEST_SKIP() << "Skipped: " << locked.error();
    // xscreensaver ignores input in its first seconds.
    letPass(TimeInterval(GetParam().locker == Kind::xscreensaver ? 3 : 0.5));
    const QImage lockedScreen = screen();
    const xcb_window_t lockerWindow = pointedAt();

    controller->show(OverlayPhase::Closed{});
    loop.runPending();
    controller->show(OverlayPhase::Scanning{});
    loop.runPending();
    const OverlayPhase failed = OverlayPhase::Failure{UnlockFailure::NotRecognised{}};
    controller->show(failed);
    EXPECT_TRUE(comesToRest(failed)) << visiblePart(failed);
    EXPECT_EQ(around(screen()), around(lockedScreen));
    EXPECT_EQ(pointedAt(), lockerWindow);

    controller->show(OverlayPhase::Hidden{});
    EXPECT_TRUE(loop.runUntil([&] { return screen() == lockedScreen; }));
    controller->show(failed);
    EXPECT_TRUE(comesToRest(failed)) << visiblePart(failed);

    // Their dialogs come up, too.
    int hovers = 0;
    controller->onHover = [&] { ++hovers; };
    for (const double y : {400.0, 20.0}) {
        pointAt(y);
        letPass(TimeInterval(0.75));
    }
    EXPECT_EQ(hovers, 1);
    EXPECT_TRUE(comesToRest(failed)) << visiblePart(failed);
    unlock();
    EXPECT_TRUE(loop.runUntil([this] { return !isLocked(); }));
    controller->show(OverlayPhase::Leaving{});
    EXPECT_TRUE(loop.runUntil([&] { return screen() == before; }));
}

INSTANTIATE_TEST_SUITE_P(
    Lockers, LockScreenOverlay,
    testing::Values(Scene{"i3lock", Kind::i3lock, false, true},
                    Scene{"i3lockBlended", Kind::i3lock, true, true},
                    Scene{"xscreensaver", Kind::xscreensaver, false, true},
                    Scene{"xscreensaverBlended", Kind::xscreensaver, true, true},
                    Scene{"xsecurelock", Kind::xsecurelock, false, false},
                    Scene{"xsecurelockBlended", Kind::xsecurelock, true, false}),
    [](const auto& scene) { return std::string(scene.param.name); });

}  // namespace
}  // namespace marrowby
