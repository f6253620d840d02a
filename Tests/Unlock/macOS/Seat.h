#pragma once

#include <functional>
#include <string>

#import <AppKit/AppKit.h>

namespace marrowby {

/// Somebody in front of the screen: sees the application's front window and works its controls as
/// AppKit does for a user. Main thread.
class Seat {
  public:
    Seat();

    /// Serves the run loop until it is so. False where that took more than a generous time.
    [[nodiscard]] static bool waitUntil(const std::function<bool()>& isSo);
    /// Serves what is under way.
    static void settle();

    /// The front window that has controls; nil where there is none.
    [[nodiscard]] static NSWindow* window();
    /// How many windows with controls there are, shown or not.
    [[nodiscard]] static std::size_t windowCount();
    /// Every control of the window that does something, from its top to its foot.
    [[nodiscard]] static NSArray<NSControl*>* controls();
    /// Nil where there is none; of buttons: the one with this title.
    [[nodiscard]] static NSControl* control(Class kind, NSString* title = nil);

    /// A click, the last choice, or a text.
    static void work(NSControl* control, NSString* text = @"Anna");
    /// False where there is no such button to press.
    [[nodiscard]] static bool press(NSString* title);
    static void closeWindow();

    /// Into the folder MARROWBY_PICTURES, where the environment names one.
    static void takePicture(NSWindow* window, const std::string& name);
};

}  // namespace marrowby
