#include "Platforms/macOS/AppKitSystemSettings.h"

#include "Platforms/macOS/FoundationText.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <ServiceManagement/ServiceManagement.h>

namespace marrowby {

namespace {

/// As the system names them, and the last part of their address.
struct Place {
    const char* name;
    const char* anchor;
};

Place place(SystemSettings::Pane pane) {
    switch (pane) {
        case SystemSettings::Pane::camera:
            return {"Camera", "Privacy_Camera"};
        case SystemSettings::Pane::accessibility:
            return {"Accessibility", "Privacy_Accessibility"};
    }
}

}  // namespace

std::string AppKitSystemSettings::location(Pane pane) const {
    return std::string("System Settings › Privacy & Security › ") + place(pane).name;
}

bool AppKitSystemSettings::open(Pane pane) {
    if (pane == Pane::accessibility) {
        NSDictionary* const options = @{(__bridge id)kAXTrustedCheckOptionPrompt : @YES};
        AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
    }
    NSString* const address =
        foundationText(std::string("x-apple.systempreferences:com.apple.preference.security?") +
                       place(pane).anchor);
    NSURL* const url = [NSURL URLWithString:address];
    return url && [NSWorkspace.sharedWorkspace openURL:url];
}

bool AppKitSystemSettings::opensAtLogin() const {
    return SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

bool AppKitSystemSettings::setOpensAtLogin(bool opens) {
    SMAppService* const service = SMAppService.mainAppService;
    return withoutExceptions(false, [&]() -> bool {
        return opens ? [service registerAndReturnError:nil]
                     : [service unregisterAndReturnError:nil];
    });
}

}  // namespace marrowby
