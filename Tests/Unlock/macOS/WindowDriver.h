// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <string>

#import <AppKit/AppKit.h>

namespace marrowby {

/// Operates the controls of the application's front window as AppKit does for a user. Main thread.
class WindowDriver {
  public:
    WindowDriver();

    /// Runs the run loop until the condition holds; false on timeout.
    [[nodiscard]] static bool waitUntil(const std::function<bool()>& condition);
    /// Runs everything that is pending.
    static void settle();

    /// The front window with controls; nil without one.
    [[nodiscard]] static NSWindow* window();
    /// Number of windows with controls, hidden ones included.
    [[nodiscard]] static std::size_t windowCount();
    /// The window's active controls, top to bottom.
    [[nodiscard]] static NSArray<NSControl*>* controls();
    /// The control of this kind, for a button also of this title; nil if there is none.
    [[nodiscard]] static NSControl* control(Class kind, NSString* title = nil);

    /// Clicks a button, picks the last choice or enters the text.
    static void operate(NSControl* control, NSString* text = @"Anna");
    /// False if there is no such enabled button.
    [[nodiscard]] static bool press(NSString* title);
    static void closeWindow();

    /// Saves a picture into the folder MARROWBY_PICTURES, if set.
    static void takePicture(NSWindow* window, const std::string& name);
};

}  // namespace marrowby
