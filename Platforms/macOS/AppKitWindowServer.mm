// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/AppKitWindowServer.h"

#include "Platforms/macOS/CoreFoundationOwner.h"
#include "Platforms/macOS/FoundationText.h"
#include "Platforms/macOS/PanelView.h"
#include "Platforms/macOS/Rules/PanelConfiguration.h"

#include <array>
#include <cstdint>
#include <span>
#include <utility>

#import <AppKit/AppKit.h>
#include <dlfcn.h>

/// Never becomes key, so the lock screen keeps the keyboard.
@interface MarrowbyLockScreenPanel : NSPanel
@end

@implementation MarrowbyLockScreenPanel

- (BOOL)canBecomeKeyWindow {
    return NO;
}

- (BOOL)canBecomeMainWindow {
    return NO;
}

@end

namespace marrowby {

namespace {

/// Height of the screen whose lower left corner is AppKit's origin.
CGFloat mainHeight() {
    return NSScreen.screens.firstObject.frame.size.height;
}

NSRect appKitRect(const Rect& rect) {
    return NSMakeRect(rect.x, mainHeight() - rect.maxY(), rect.width, rect.height);
}

Size notchOf(NSScreen* screen) {
    const CGFloat height = screen.safeAreaInsets.top;
    if (height <= 0) return {};
    return {.width = screen.frame.size.width - screen.auxiliaryTopLeftArea.size.width -
                     screen.auxiliaryTopRightArea.size.width,
            .height = height};
}

class PolledPointer final : public WindowServer::PointerWatch {
  public:
    explicit PolledPointer(std::function<void(const Point&)> onPlace)
        : onPlace_(std::make_shared<const std::function<void(const Point&)>>(std::move(onPlace))) {
        timer_ = [NSTimer timerWithTimeInterval:pointerInterval.count()
                                        repeats:YES
                                          block:^(NSTimer*) {
                                            @autoreleasepool {
                                                ask();
                                            }
                                          }];
        timer_.tolerance = pointerInterval.count() / 2;
        [NSRunLoop.mainRunLoop addTimer:timer_ forMode:NSRunLoopCommonModes];
    }
    PolledPointer(const PolledPointer&) = delete;
    PolledPointer& operator=(const PolledPointer&) = delete;
    ~PolledPointer() override { [timer_ invalidate]; }

  private:
    void ask() {
        const NSPoint place = NSEvent.mouseLocation;
        const Point now{.x = place.x, .y = mainHeight() - place.y};
        if (last_ == now) return;
        last_ = now;
        // Copy: the callback may end the watch.
        const auto running = onPlace_;
        (*running)(now);
    }

    std::shared_ptr<const std::function<void(const Point&)>> onPlace_;
    std::optional<Point> last_;
    NSTimer* timer_;
};

NSPanel* configured(const PanelConfiguration& configuration, const Rect& frame) {
    NSPanel* const panel = [[MarrowbyLockScreenPanel alloc]
        initWithContentRect:appKitRect(frame)
                  styleMask:configuration.styleMask
                    backing:static_cast<NSBackingStoreType>(configuration.backing)
                      defer:configuration.isDeferred];
    panel.opaque = configuration.isOpaque;
    if (configuration.hasClearBackground) panel.backgroundColor = NSColor.clearColor;
    panel.hasShadow = configuration.hasShadow;
    panel.movable = configuration.isMovable;
    panel.releasedWhenClosed = configuration.isReleasedWhenClosed;
    panel.hidesOnDeactivate = configuration.hidesOnDeactivate;
    panel.level = configuration.level;
    panel.collectionBehavior = configuration.collectionBehavior;
    panel.animationBehavior =
        static_cast<NSWindowAnimationBehavior>(configuration.animationBehavior);
    panel.ignoresMouseEvents = configuration.ignoresMouseEvents;
    panel.acceptsMouseMovedEvents = configuration.acceptsMouseMovedEvents;
    panel.canBecomeVisibleWithoutLogin = configuration.canBecomeVisibleWithoutLogin;
    return panel;
}

class AppKitPanel final : public LockScreenPanel {
  public:
    AppKitPanel(NSPanel* panel, std::shared_ptr<PanelContent> content)
        : panel_(panel), content_(std::move(content)) {
        MarrowbyPanelView* const view = [[MarrowbyPanelView alloc] init];
        panel_.contentView = view;
        if (!content_) return;
        content_->onChange(
            [view, content = content_.get()] { [view showDrawing:content->drawing()]; });
        [view showDrawing:content_->drawing()];
    }
    AppKitPanel(const AppKitPanel&) = delete;
    AppKitPanel& operator=(const AppKitPanel&) = delete;
    ~AppKitPanel() override {
        if (content_) content_->onChange(nullptr);
        [panel_ close];
    }

    [[nodiscard]] std::int64_t windowNumber() const override { return panel_.windowNumber; }
    void setFrame(const Rect& frame) override { [panel_ setFrame:appKitRect(frame) display:NO]; }
    void orderFront() override { [panel_ orderFrontRegardless]; }
    void orderOut() override { [panel_ orderOut:nil]; }

  private:
    NSPanel* panel_;
    std::shared_ptr<PanelContent> content_;
};

using OwnedArray = CoreFoundationOwner<CFArrayRef>;

template <typename Number>
OwnedArray numbers(std::span<const Number> values) {
    NSMutableArray<NSNumber*>* const array = [NSMutableArray array];
    for (const Number value : values)
        [array addObject:@(value)];
    // __bridge alone does not retain: ARC could release the array before the call.
    return OwnedArray(static_cast<CFArrayRef>(CFBridgingRetain(array)));
}

/// Functions of the private framework, undocumented by Apple. The signatures are those that many
/// releases have accepted; results are ignored.
class LoadedSkyLight final : public SkyLightFunctions {
  public:
    using Addresses = std::array<void*, skylight::symbols.size()>;
    explicit LoadedSkyLight(const Addresses& addresses) : addresses_(addresses) {}

    [[nodiscard]] Connection mainConnectionID() override { return call<Connection()>(0)(); }
    [[nodiscard]] Space spaceCreate(Connection connection, std::int32_t one,
                                    std::int32_t zero) override {
        return call<Space(Connection, std::int32_t, std::int32_t)>(1)(connection, one, zero);
    }
    void spaceSetAbsoluteLevel(Connection connection, Space space, std::int32_t level) override {
        call<std::int32_t(Connection, Space, std::int32_t)>(2)(connection, space, level);
    }
    void showSpaces(Connection connection, std::span<const Space> spaces) override {
        call<std::int32_t(Connection, CFArrayRef)>(3)(connection, numbers(spaces).get());
    }
    void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                            std::span<const std::int64_t> windows,
                                            std::int32_t options) override {
        call<std::int32_t(Connection, Space, CFArrayRef, std::int32_t)>(4)(
            connection, space, numbers(windows).get(), options);
    }
    void removeWindowsFromSpaces(Connection connection, std::span<const std::int64_t> windows,
                                 std::span<const Space> spaces) override {
        call<std::int32_t(Connection, CFArrayRef, CFArrayRef)>(5)(
            connection, numbers(windows).get(), numbers(spaces).get());
    }

  private:
    template <typename Signature>
    [[nodiscard]] Signature* call(std::size_t symbol) const {
        return reinterpret_cast<Signature*>(addresses_[symbol]);
    }

    Addresses addresses_;
};

std::shared_ptr<SkyLightFunctions> loadSkyLight() {
    void* const library = ::dlopen(skylight::path, RTLD_NOW);
    if (!library) return nullptr;
    LoadedSkyLight::Addresses addresses{};
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        addresses[i] = ::dlsym(library, skylight::symbols[i]);
        if (!addresses[i]) return nullptr;
    }
    return std::make_shared<LoadedSkyLight>(addresses);
}

}  // namespace

std::optional<ScreenGeometry> AppKitWindowServer::mainScreen() {
    NSScreen* const screen = NSScreen.screens.firstObject;
    if (!screen) return std::nullopt;
    const NSSize size = screen.frame.size;
    return ScreenGeometry{.frame = {.width = size.width, .height = size.height},
                          .notch = notchOf(screen)};
}

ActiveDisplays AppKitWindowServer::activeDisplays() {
    // The online ones: a display that sleeps is not active.
    std::array<CGDirectDisplayID, 16> found{};
    std::uint32_t count = 0;
    if (CGGetOnlineDisplayList(found.size(), found.data(), &count) != kCGErrorSuccess) return {};
    ActiveDisplays displays;
    for (const CGDirectDisplayID display : std::span(found).first(count))
        (CGDisplayIsBuiltin(display) ? displays.hasBuiltIn : displays.hasExternal) = true;
    return displays;
}

std::unique_ptr<WindowServer::PointerWatch> AppKitWindowServer::watchPointer(
    std::function<void(const Point&)> onPlace) {
    return std::make_unique<PolledPointer>(std::move(onPlace));
}

std::unique_ptr<LockScreenPanel> AppKitWindowServer::makePanel(
    const Rect& frame, std::shared_ptr<PanelContent> content) {
    const PanelConfiguration configuration{.level = CGShieldingWindowLevel() + std::int64_t{1}};
    NSPanel* const panel =
        withoutExceptions<NSPanel*>(nil, [&] { return configured(configuration, frame); });
    if (!panel) return nullptr;
    return std::make_unique<AppKitPanel>(panel, std::move(content));
}

std::unique_ptr<LockScreenSpace> AppKitWindowServer::makeLockScreenSpace() {
    if (!functions()) return nullptr;
    return std::make_unique<SkyLightSpace>(functions());
}

const std::shared_ptr<SkyLightFunctions>& AppKitWindowServer::functions() {
    if (!functions_) functions_ = loadSkyLight();
    return *functions_;
}

}  // namespace marrowby
