#include "Platforms/macOS/AppKitWindowServer.h"

#include "Platforms/macOS/FoundationText.h"

#include <array>
#include <utility>

#import <AppKit/AppKit.h>
#include <dlfcn.h>

/// Never takes the keyboard from the lock screen.
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

NSRect appKitRect(const Rect& rect) {
    return NSMakeRect(rect.x, rect.y, rect.width, rect.height);
}

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
        : panel_(panel), content_(std::move(content)) {}
    AppKitPanel(const AppKitPanel&) = delete;
    AppKitPanel& operator=(const AppKitPanel&) = delete;
    ~AppKitPanel() override { [panel_ close]; }

    [[nodiscard]] std::int64_t windowNumber() const override { return panel_.windowNumber; }
    void setFrame(const Rect& frame) override { [panel_ setFrame:appKitRect(frame) display:NO]; }
    void orderFront() override { [panel_ orderFrontRegardless]; }
    void orderOut() override { [panel_ orderOut:nil]; }

  private:
    NSPanel* panel_;
    std::shared_ptr<PanelContent> content_;
};

template <typename Number>
CFArrayRef numbers(std::span<const Number> values) {
    NSMutableArray<NSNumber*>* const array = [NSMutableArray array];
    for (const Number value : values)
        [array addObject:@(value)];
    return (__bridge CFArrayRef)array;
}

/// The entry points of the private framework. Apple documents none of them: the types are those
/// that the window server has taken for many releases, and their results are not looked at.
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
        call<std::int32_t(Connection, CFArrayRef)>(3)(connection, numbers(spaces));
    }
    void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                            std::span<const std::int64_t> windows,
                                            std::int32_t options) override {
        call<std::int32_t(Connection, Space, CFArrayRef, std::int32_t)>(4)(
            connection, space, numbers(windows), options);
    }
    void removeWindowsFromSpaces(Connection connection, std::span<const std::int64_t> windows,
                                 std::span<const Space> spaces) override {
        call<std::int32_t(Connection, CFArrayRef, CFArrayRef)>(5)(connection, numbers(windows),
                                                                  numbers(spaces));
    }

  private:
    template <typename Signature>
    [[nodiscard]] Signature* call(std::size_t symbol) const {
        return reinterpret_cast<Signature*>(addresses_[symbol]);
    }

    Addresses addresses_;
};

}  // namespace

std::int64_t AppKitWindowServer::shieldingWindowLevel() {
    return CGShieldingWindowLevel();
}

std::unique_ptr<LockScreenPanel> AppKitWindowServer::makePanel(
    const PanelConfiguration& configuration, const Rect& frame,
    std::shared_ptr<PanelContent> content) {
    NSPanel* const panel =
        withoutExceptions<NSPanel*>(nil, [&] { return configured(configuration, frame); });
    if (!panel) return nullptr;
    if (const auto* const filled = dynamic_cast<const AppKitPanelContent*>(content.get()))
        panel.contentView = filled->view();
    return std::make_unique<AppKitPanel>(panel, std::move(content));
}

std::shared_ptr<SkyLightFunctions> AppKitWindowServer::loadSkyLight() {
    // Stays open as long as the process lives.
    void* const library = ::dlopen(skylight::path, RTLD_NOW);
    if (!library) return nullptr;
    LoadedSkyLight::Addresses addresses{};
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        addresses[i] = ::dlsym(library, skylight::symbols[i]);
        if (!addresses[i]) return nullptr;
    }
    return std::make_shared<LoadedSkyLight>(addresses);
}

}  // namespace marrowby
