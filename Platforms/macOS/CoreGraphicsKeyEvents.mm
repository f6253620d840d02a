// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/CoreGraphicsKeyEvents.h"

#include "Platforms/macOS/CoreFoundationOwner.h"
#include "Platforms/macOS/FoundationText.h"
#include "Platforms/macOS/Rules/KeyCodes.h"
#include "Platforms/macOS/Rules/LoginWindowKeyboard.h"

#include <thread>
#include <utility>

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>

namespace marrowby {

static_assert(mackey::command == kVK_Command && mackey::rightArrow == kVK_RightArrow &&
              mackey::backspace == kVK_Delete && mackey::returnKey == kVK_Return &&
              mackey::leftShift == kVK_Shift && mackey::leftControl == kVK_Control &&
              mackey::letterU == kVK_ANSI_U);
static_assert(mackey::commandFlag == kCGEventFlagMaskCommand);
static_assert(mackey::hidSystemState == kCGEventSourceStateHIDSystemState &&
              mackey::hidEventTap == kCGHIDEventTap);

namespace {

using Source = CoreFoundationOwner<CGEventSourceRef>;
using Event = CoreFoundationOwner<CGEventRef>;

KeyboardFacts keyboardNow() {
    NSRunningApplication* const front = NSWorkspace.sharedWorkspace.frontmostApplication;
    KeyboardFacts facts{.isInputSecure = IsSecureEventInputEnabled() != 0, .frontApplication = {}};
    if (front != nil) facts.frontApplication = plainText(front.bundleIdentifier);
    return facts;
}

class EventSource final : public KeyEventSource {
  public:
    explicit EventSource(Source source) : source_(std::move(source)) {}

    [[nodiscard]] KeyPace pace() const override { return loginWindowPace; }
    [[nodiscard]] bool post(const KeyPress& press) override {
        const Event event = make(mackey::code(press.key), press.down);
        if (!event) return false;
        CGEventSetFlags(event.get(), mackey::flags(press));
        post(event);
        return true;
    }

    /// Creates both events before posting either: without its release a chunk would stay in the
    /// field.
    [[nodiscard]] bool postText(std::span<const char16_t> units, bool down) override {
        if (down) {
            const Event press = makeText(units, true);
            release_ = makeText(units, false);
            if (!press || !release_) return false;
            post(press);
            return true;
        }
        const Event release = std::move(release_);
        if (!release) return false;
        post(release);
        return true;
    }

    [[nodiscard]] bool isUndisturbed() override { return isLoginWindowsKeyboard(keyboardNow()); }
    void settle(const std::function<bool()>& /*stillLocked*/) override {}

  private:
    [[nodiscard]] Event make(std::uint16_t code, bool down) const {
        return Event(CGEventCreateKeyboardEvent(source_.get(), code, down));
    }
    [[nodiscard]] Event makeText(std::span<const char16_t> units, bool down) const {
        Event event = make(mackey::textCarrier, down);
        if (!event) return event;
        // Events of this source inherit modifiers that the user holds.
        CGEventSetFlags(event.get(), mackey::noFlags);
        static_assert(sizeof(UniChar) == sizeof(char16_t));
        CGEventKeyboardSetUnicodeString(event.get(), units.size(),
                                        reinterpret_cast<const UniChar*>(units.data()));
        return event;
    }
    static void post(const Event& event) {
        CGEventPost(static_cast<CGEventTapLocation>(mackey::hidEventTap), event.get());
    }

    Source source_;
    Event release_;
};

}  // namespace

bool CoreGraphicsKeyEvents::isTrusted() const {
    return AXIsProcessTrusted();
}

bool CoreGraphicsKeyEvents::mayPost() const {
    return CGPreflightPostEventAccess();
}

std::unique_ptr<KeyEventSource> CoreGraphicsKeyEvents::makeSource(
    std::span<const char16_t> /*text*/, std::span<const EditingKey> /*keys*/) {
    Source source(CGEventSourceCreate(static_cast<CGEventSourceStateID>(mackey::hidSystemState)));
    if (!source) return nullptr;
    return std::make_unique<EventSource>(std::move(source));
}

void CoreGraphicsKeyEvents::pause(TimeInterval duration) {
    std::this_thread::sleep_for(duration);
}

}  // namespace marrowby
