// SPDX-License-Identifier: Apache-2.0
#import "Tests/Unlock/macOS/WindowDriver.h"

#import "Platforms/macOS/FoundationText.h"

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace marrowby {

namespace {

/// The application's windows are their own delegates.
bool isPage(NSWindow* window) {
    return window.delegate == static_cast<id>(window);
}

void collect(NSView* view, NSMutableArray<NSControl*>* found) {
    if (view.isHidden || [view isKindOfClass:NSScroller.class]) return;
    if ([view isKindOfClass:NSControl.class]) {
        NSControl* const control = static_cast<NSControl*>(view);
        const bool isField = [control isKindOfClass:NSTextField.class];
        if (isField ? static_cast<NSTextField*>(control).isEditable : control.action != nil)
            [found addObject:control];
    }
    for (NSView* inner in view.subviews)
        collect(inner, found);
}

void serve(NSTimeInterval seconds) {
    @autoreleasepool {
        NSEvent* const event =
            [NSApp nextEventMatchingMask:NSUIntegerMax
                               untilDate:[NSDate dateWithTimeIntervalSinceNow:seconds]
                                  inMode:NSDefaultRunLoopMode
                                 dequeue:YES];
        if (event) [NSApp sendEvent:event];
        [NSApp updateWindows];
    }
}

}  // namespace

WindowDriver::WindowDriver() {
    @autoreleasepool {
        [NSApplication sharedApplication];
        [NSApp finishLaunching];
    }
}

bool WindowDriver::waitUntil(const std::function<bool()>& condition) {
    NSDate* const deadline = [NSDate dateWithTimeIntervalSinceNow:60];
    while (!condition()) {
        if (deadline.timeIntervalSinceNow < 0) return false;
        serve(0.01);
    }
    return true;
}

void WindowDriver::settle() {
    // Runs after everything posted before.
    const auto hasRun = std::make_shared<bool>(false);
    dispatch_async(dispatch_get_main_queue(), ^{
      *hasRun = true;
    });
    (void)waitUntil([&] { return *hasRun; });
    serve(0);
}

NSWindow* WindowDriver::window() {
    @autoreleasepool {
        for (NSWindow* window in NSApp.windows)
            if (isPage(window) && window.isVisible) return window;
        return nil;
    }
}

std::size_t WindowDriver::windowCount() {
    @autoreleasepool {
        std::size_t count = 0;
        for (NSWindow* window in NSApp.windows)
            if (isPage(window)) ++count;
        return count;
    }
}

NSArray<NSControl*>* WindowDriver::controls() {
    @autoreleasepool {
        NSMutableArray<NSControl*>* const found = [[NSMutableArray alloc] init];
        if (NSWindow* const front = window()) collect(front.contentView, found);
        return found;
    }
}

NSControl* WindowDriver::control(Class kind, NSString* title) {
    @autoreleasepool {
        for (NSControl* control in controls()) {
            if (![control isKindOfClass:kind]) continue;
            if (!title || [static_cast<NSButton*>(control).title isEqualToString:title])
                return control;
        }
        return nil;
    }
}

void WindowDriver::operate(NSControl* control, NSString* text) {
    @autoreleasepool {
        if ([control isKindOfClass:NSTextField.class]) {
            NSTextField* const field = static_cast<NSTextField*>(control);
            field.stringValue = text;
            NSNotification* const note =
                [NSNotification notificationWithName:NSControlTextDidChangeNotification
                                              object:field];
            if ([field.delegate respondsToSelector:@selector(controlTextDidChange:)])
                [field.delegate performSelector:@selector(controlTextDidChange:) withObject:note];
        } else if ([control isKindOfClass:NSPopUpButton.class]) {
            NSPopUpButton* const choice = static_cast<NSPopUpButton*>(control);
            [choice selectItemAtIndex:choice.numberOfItems - 1];
            [NSApp sendAction:choice.action to:choice.target from:choice];
        } else if ([control isKindOfClass:NSSwitch.class]) {
            NSSwitch* const toggle = static_cast<NSSwitch*>(control);
            toggle.state = toggle.state == NSControlStateValueOn ? NSControlStateValueOff
                                                                 : NSControlStateValueOn;
            [NSApp sendAction:toggle.action to:toggle.target from:toggle];
        } else {
            [control performClick:nil];
        }
    }
    settle();
}

bool WindowDriver::press(NSString* title) {
    NSControl* const button = control(NSButton.class, title);
    if (!button || !button.isEnabled) return false;
    operate(button);
    return true;
}

void WindowDriver::closeWindow() {
    @autoreleasepool {
        [window() performClose:nil];
    }
    settle();
}

void WindowDriver::takePicture(NSWindow* window, const std::string& name) {
    const char* const folder = std::getenv("MARROWBY_PICTURES");
    if (!folder || !window) return;
    @autoreleasepool {
        [window display];
        NSView* const view = window.contentView;
        NSBitmapImageRep* const picture = [view bitmapImageRepForCachingDisplayInRect:view.bounds];
        [view cacheDisplayInRect:view.bounds toBitmapImageRep:picture];
        NSData* const bytes = [picture representationUsingType:NSBitmapImageFileTypePNG
                                                    properties:@{}];
        const std::filesystem::path path = std::filesystem::path(folder) / (name + ".png");
        [bytes writeToFile:foundationText(path.string()) atomically:NO];
    }
}

}  // namespace marrowby
