// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/AppKitSystemSettings.h"

#include "Platforms/macOS/FoundationText.h"
#include "Platforms/macOS/Rules/SettingsPanes.h"

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <ServiceManagement/ServiceManagement.h>

namespace marrowby {

bool AppKitSystemSettings::open(Pane pane) {
    const macsettings::Place place = macsettings::place(pane);
    if (place.asksForTrust) {
        NSDictionary* const options = @{(__bridge id)kAXTrustedCheckOptionPrompt : @YES};
        AXIsProcessTrustedWithOptions((__bridge CFDictionaryRef)options);
    }
    NSString* const address =
        foundationText(std::string(macsettings::openAtAddress) + place.anchor);
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
