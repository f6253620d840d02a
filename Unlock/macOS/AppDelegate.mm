// SPDX-License-Identifier: Apache-2.0
#import "Unlock/macOS/AppDelegate.h"

#import "Platforms/macOS/FoundationText.h"
#include "Unlock/macOS/MacApplication.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <memory>

#import <Carbon/Carbon.h>

namespace {

using marrowby::foundationText;
using marrowby::Phrase;
using marrowby::translated;

/// From the launch event's parameters.
bool isLaunchAtLogin() {
    NSAppleEventDescriptor* const event =
        NSAppleEventManager.sharedAppleEventManager.currentAppleEvent;
    return event.eventID == kAEOpenApplication &&
           [event paramDescriptorForKeyword:keyAEPropData].enumCodeValue ==
               keyAELaunchedAsLogInItem;
}

NSMenuItem* submenu(NSString* title, NSArray<NSMenuItem*>* items) {
    NSMenuItem* const entry = [[NSMenuItem alloc] init];
    entry.submenu = [[NSMenu alloc] initWithTitle:title];
    for (NSMenuItem* item in items)
        [entry.submenu addItem:item];
    return entry;
}

NSMenuItem* item(Phrase title, SEL action, NSString* key) {
    return [[NSMenuItem alloc] initWithTitle:foundationText(translated(title))
                                      action:action
                               keyEquivalent:key];
}

/// Invisible in an agent application, but provides the windows' keyboard shortcuts.
NSMenu* mainMenu() {
    NSMenu* const menu = [[NSMenu alloc] init];
    [menu addItem:submenu(@"Marrowby Unlock", @[])];
    [menu addItem:submenu(foundationText(translated("Edit")), @[
              item(Phrase("Undo"), @selector(undo:), @"z"),
              item(Phrase("Cut"), @selector(cut:), @"x"),
              item(Phrase("Copy"), @selector(copy:), @"c"),
              item(Phrase("Paste"), @selector(paste:), @"v"),
              item(Phrase("Select All"), @selector(selectAll:), @"a"),
          ])];
    [menu addItem:submenu(foundationText(translated("Window")), @[
              item(Phrase("Minimize"), @selector(performMiniaturize:), @"m"),
              item(Phrase("Close"), @selector(performClose:), @"w"),
          ])];
    return menu;
}

}  // namespace

@implementation MarrowbyAppDelegate {
    std::unique_ptr<marrowby::MacApplication> _mac;
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification {
    const bool isAtLogin = isLaunchAtLogin();
    NSApp.mainMenu = mainMenu();
    _mac = std::make_unique<marrowby::MacApplication>();
    _mac->application().didFinishLaunching(
        {.isAtLogin = isAtLogin, .isVisible = _mac->isVisible()});
}

- (BOOL)applicationShouldHandleReopen:(NSApplication*)__unused application
                    hasVisibleWindows:(BOOL)__unused hasVisibleWindows {
    if (_mac) _mac->application().shouldHandleReopen();
    return NO;
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)__unused application {
    return marrowby::UnlockApplication::shouldTerminateAfterLastWindowClosed();
}

- (void)applicationWillTerminate:(NSNotification*)__unused notification {
    if (_mac) _mac->willTerminate();
}

- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)__unused application {
    return YES;
}

@end
