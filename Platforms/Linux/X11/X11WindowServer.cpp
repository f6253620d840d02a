// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11WindowServer.h"

#include "Platforms/Linux/X11/PanelPainter.h"
#include "Platforms/Linux/X11/X11Panel.h"
#include "Platforms/Linux/X11/X11PointerWatch.h"
#include "Platforms/Linux/X11/X11Screen.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <utility>

namespace marrowby {

X11WindowServer::X11WindowServer(std::optional<std::string> displayName)
    : displayName_(std::move(displayName)) {}

std::unique_ptr<LockScreenPanel> X11WindowServer::makePanel(const Rect& frame,
                                                            std::shared_ptr<PanelContent> content) {
    if (!displayName_ || !content || !panelpainter::canPaint() || !mainScreen()) return nullptr;
    return std::make_unique<X11Panel>(*displayName_, frame, std::move(content));
}

std::optional<ScreenGeometry> X11WindowServer::mainScreen() {
    if (!displayName_) return std::nullopt;
    const auto connection = XcbConnection::create(*displayName_);
    if (!connection) return std::nullopt;
    const auto screen = X11Screen::main(**connection);
    if (!screen) return std::nullopt;
    return screen->geometry();
}

ActiveDisplays X11WindowServer::activeDisplays() {
    if (!displayName_) return {};
    const auto connection = XcbConnection::create(*displayName_);
    return connection ? X11Screen::activeDisplays(**connection) : ActiveDisplays();
}

std::unique_ptr<WindowServer::PointerWatch> X11WindowServer::watchPointer(
    std::function<void(const Point&)> onPlace) {
    if (!displayName_) return nullptr;
    return X11PointerWatch::create(*displayName_, std::move(onPlace));
}

}  // namespace marrowby
