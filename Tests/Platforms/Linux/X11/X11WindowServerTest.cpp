// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11Screen.h"
#include "Platforms/Linux/X11/X11WindowServer.h"
#include "Tests/Platforms/Linux/PrivateDisplay.h"
#include "Tests/Platforms/Linux/QtLoop.h"

#include <QGuiApplication>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace marrowby {
namespace {

using panelshape::RoundedRectangle;

constexpr PanelColor red{.red = 1};
constexpr Rect place{.x = 100, .y = 0, .width = 100, .height = 40};

struct X11WindowServerTest : testing::Test {
    bool isOffscreen = qputenv("QT_QPA_PLATFORM", "offscreen");
    QtLoopOf<QGuiApplication> loop;
    std::unique_ptr<PrivateDisplay> display = PrivateDisplay::start();
    std::optional<X11WindowServer> server;

    void SetUp() override {
        if (!display) GTEST_SKIP() << noPrivateDisplay;
        server.emplace(display->name());
    }

    /// 0xRRGGBB
    [[nodiscard]] std::uint32_t pixel(std::int16_t x, std::int16_t y) const {
        const XcbConnection& connection = display->connection();
        const auto image = connection.reply<xcb_get_image_reply>(xcb_get_image(
            connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, connection.root(), x, y, 1, 1, ~0U));
        if (!image) return 0;
        return *reinterpret_cast<const std::uint32_t*>(xcb_get_image_data(image.get())) & 0xFFFFFF;
    }
    [[nodiscard]] bool becomes(std::int16_t x, std::int16_t y, std::uint32_t color) {
        return loop.runUntil([&] { return pixel(x, y) == color; });
    }
};

TEST_F(X11WindowServerTest, aPanelSurvivesItsDisplayAndReturnsOnTheNext) {
    const auto content = std::make_shared<PanelContent>();
    const auto panel = server->makePanel(place, content);
    ASSERT_TRUE(panel);
    const RoundedRectangle left{.frame = {.x = 0, .y = 0, .width = 50, .height = 40}, .color = red};
    panel->orderFront();
    content->draw({left});
    EXPECT_TRUE(becomes(110, 20, 0xFF0000));
    EXPECT_TRUE(becomes(190, 20, 0));
    EXPECT_NE(panel->windowNumber(), 0);

    display->kill();
    ASSERT_TRUE(loop.runUntil([&] { return panel->windowNumber() == 0; }));
    content->draw({});
    panel->orderFront();
    EXPECT_EQ(server->mainScreen(), std::nullopt);
    EXPECT_FALSE(server->makePanel(place, std::make_shared<PanelContent>()));
    EXPECT_FALSE(server->watchPointer([](const Point&) {}));
    EXPECT_EQ(X11WindowServer(std::nullopt).mainScreen(), std::nullopt);

    ASSERT_TRUE(display->startAgain());
    content->draw({left});
    panel->orderFront();
    EXPECT_TRUE(becomes(110, 20, 0xFF0000));
    panel->orderOut();
    EXPECT_TRUE(becomes(110, 20, 0));
}

TEST_F(X11WindowServerTest, reportsThePointersPositionInPoints) {
    EXPECT_EQ(server->mainScreen()->frame, (Rect{.x = 0, .y = 0, .width = 640, .height = 480}));
    constexpr std::string_view resources = "Xcursor.size:\t24\nXft.dpi:\t192\n";
    const XcbConnection& connection = display->connection();
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, connection.root(),
                        XCB_ATOM_RESOURCE_MANAGER, XCB_ATOM_STRING, 8, resources.size(),
                        resources.data());
    connection.flush();
    EXPECT_EQ(server->mainScreen()->frame, (Rect{.x = 0, .y = 0, .width = 320, .height = 240}));

    std::vector<Point> places;
    std::unique_ptr<WindowServer::PointerWatch> watch;
    watch = server->watchPointer([&](const Point& point) {
        places.push_back(point);
        if (places.size() == 2) watch.reset();
    });
    ASSERT_TRUE(loop.runUntil([&] { return places.size() == 1; }));
    EXPECT_EQ(places[0], (Point{.x = 160, .y = 120}));
    display->movePointer();
    ASSERT_TRUE(loop.runUntil([&] { return places.size() == 2; }));
    EXPECT_EQ(places[1], (Point{.x = 160.5, .y = 120}));
}

TEST_F(X11WindowServerTest, tellsTheComputersOwnPanelFromOtherDisplays) {
    constexpr ActiveDisplays external{.hasBuiltIn = false, .hasExternal = true};
    EXPECT_EQ(server->activeDisplays(), external) << "a private server’s one output";
    display->kill();
    EXPECT_EQ(server->activeDisplays(), ActiveDisplays());
    EXPECT_EQ(X11WindowServer(std::nullopt).activeDisplays(), ActiveDisplays());
    for (const char* panel : {"eDP-1", "eDP1", "LVDS-1", "DSI-1"})
        EXPECT_TRUE(X11Screen::isBuiltIn(panel)) << panel;
    for (const char* other : {"DP-1", "HDMI-A-0", "DVI-D-0", "VGA-1", "Virtual-1", "XWAYLAND0", ""})
        EXPECT_FALSE(X11Screen::isBuiltIn(other)) << other;
}

}  // namespace
}  // namespace marrowby
