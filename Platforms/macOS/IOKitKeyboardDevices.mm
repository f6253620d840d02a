// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/IOKitKeyboardDevices.h"

#include "Platforms/macOS/CoreFoundationOwner.h"

#include <utility>

#import <Foundation/Foundation.h>
#import <IOKit/hid/IOHIDLib.h>
#import <IOKit/hidsystem/IOHIDLib.h>

namespace marrowby {

namespace {

static_assert(hidmanager::success == kIOReturnSuccess);
static_assert(hidmanager::exclusiveAccess == static_cast<std::uint32_t>(kIOReturnExclusiveAccess));

using Handler = std::function<void(const KeyboardDevices::InputValue&)>;
using Manager = CoreFoundationOwner<IOHIDManagerRef>;

/// Longer values belong to elements other than keys.
constexpr CFIndex longestNumber = sizeof(std::int64_t);

class ManagerListening final : public KeyboardDevices::Listening {
  public:
    ManagerListening(Manager manager, Handler handler)
        : manager_(std::move(manager)),
          handler_(std::make_shared<const Handler>(std::move(handler))) {}
    ManagerListening(const ManagerListening&) = delete;
    ManagerListening& operator=(const ManagerListening&) = delete;
    ~ManagerListening() override {
        IOHIDManagerRegisterInputValueCallback(manager_.get(), nullptr, nullptr);
        IOHIDManagerUnscheduleFromRunLoop(manager_.get(), CFRunLoopGetMain(),
                                          kCFRunLoopCommonModes);
        if (isOpen_) IOHIDManagerClose(manager_.get(), kIOHIDOptionsTypeNone);
    }

    [[nodiscard]] bool open() {
        IOHIDManagerRegisterInputValueCallback(manager_.get(), &received, this);
        IOHIDManagerScheduleWithRunLoop(manager_.get(), CFRunLoopGetMain(), kCFRunLoopCommonModes);
        isOpen_ = hidmanager::isOpen(
            static_cast<std::uint32_t>(IOHIDManagerOpen(manager_.get(), kIOHIDOptionsTypeNone)));
        return isOpen_;
    }

  private:
    static void received(void* context, IOReturn result, void* /*sender*/, IOHIDValueRef value) {
        if (result != kIOReturnSuccess || IOHIDValueGetLength(value) > longestNumber) return;
        const IOHIDElementRef element = IOHIDValueGetElement(value);
        // Copies: the handler may destroy this object; both last until it returns.
        const auto* const self = static_cast<const ManagerListening*>(context);
        const auto handler = self->handler_;
        NS_VALID_UNTIL_END_OF_SCOPE const id manager = (__bridge id)self->manager_.get();
        @autoreleasepool {
            (*handler)({.usagePage = IOHIDElementGetUsagePage(element),
                        .usage = IOHIDElementGetUsage(element),
                        .value = IOHIDValueGetIntegerValue(value)});
        }
        (void)manager;
    }

    Manager manager_;
    std::shared_ptr<const Handler> handler_;
    bool isOpen_ = false;
};

}  // namespace

bool IOKitKeyboardDevices::hasListenAccess() const {
    return IOHIDCheckAccess(kIOHIDRequestTypeListenEvent) == kIOHIDAccessTypeGranted;
}

void IOKitKeyboardDevices::requestListenAccess() {
    IOHIDRequestAccess(kIOHIDRequestTypeListenEvent);
}

std::unique_ptr<KeyboardDevices::Listening> IOKitKeyboardDevices::open(
    Match match, std::function<void(const InputValue&)> onValue) {
    Manager manager(IOHIDManagerCreate(kCFAllocatorDefault, kIOHIDOptionsTypeNone));
    if (!manager) return nullptr;
    NSDictionary* const matching = @{
        @kIOHIDDeviceUsagePageKey : @(match.usagePage),
        @kIOHIDDeviceUsageKey : @(match.usage),
    };
    IOHIDManagerSetDeviceMatching(manager.get(), (__bridge CFDictionaryRef)matching);
    auto listening = std::make_unique<ManagerListening>(std::move(manager), std::move(onValue));
    if (!listening->open()) return nullptr;
    return listening;
}

}  // namespace marrowby
