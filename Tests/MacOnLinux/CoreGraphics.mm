// SPDX-License-Identifier: Apache-2.0
#include "Tests/MacOnLinux/CoreGraphics.h"

#include "Platforms/macOS/FoundationText.h"
#include "Tests/MacOnLinux/Counted.h"

#include <string>

#import <AppKit/AppKit.h>
#import <ApplicationServices/ApplicationServices.h>
#import <Carbon/Carbon.h>

@interface MacEvent : NSObject
@property(nonatomic) CGKeyCode code;
@property(nonatomic) bool isDown;
@property(nonatomic) CGEventFlags flags;
@property(nonatomic, copy) NSString* text;
@end
@implementation MacEvent
@end

@interface MacFrontApplication : NSRunningApplication
@end
@implementation MacFrontApplication
- (NSString*)bundleIdentifier {
    return *marrowby::fakeWindowSession().frontApplication;
}
@end

#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"
@implementation NSWorkspace (MacOnLinux)
- (NSRunningApplication*)frontmostApplication {
    const bool isAnyInFront = marrowby::fakeWindowSession().frontApplication.has_value();
    return isAnyInFront ? [[MacFrontApplication alloc] init] : nil;
}
@end

namespace marrowby {

FakeWindowSession& fakeWindowSession() {
    static FakeWindowSession session;
    return session;
}

}  // namespace marrowby

using marrowby::fakeWindowSession;

extern "C" {

CGEventSourceRef CGEventSourceCreate(CGEventSourceStateID) {
    if (!fakeWindowSession().hasSource) return nullptr;
    return (__bridge_retained CGEventSourceRef)marrowby::counted([[NSObject alloc] init]);
}
CGEventRef CGEventCreateKeyboardEvent(CGEventSourceRef source, CGKeyCode code, bool down) {
    const id alive = (__bridge id)source;
    if (!alive || fakeWindowSession().eventsLeft == 0) return nullptr;
    --fakeWindowSession().eventsLeft;
    MacEvent* const event = marrowby::counted([[MacEvent alloc] init]);
    event.code = code;
    event.isDown = down;
    event.flags = fakeWindowSession().heldFlags;
    return (__bridge_retained CGEventRef)event;
}
void CGEventSetFlags(CGEventRef event, CGEventFlags flags) {
    ((__bridge MacEvent*)event).flags = flags;
}
void CGEventKeyboardSetUnicodeString(CGEventRef event, UniCharCount length, const UniChar* text) {
    ((__bridge MacEvent*)event).text = [[NSString alloc] initWithCharacters:text length:length];
}
void CGEventPost(CGEventTapLocation, CGEventRef event) {
    MacEvent* const posted = (__bridge MacEvent*)event;
    std::string words = (posted.isDown ? "down " : "up ") + std::to_string(posted.code);
    if (posted.flags != 0) words += " flags " + std::to_string(posted.flags);
    if (posted.text) words += " " + marrowby::plainText(posted.text);
    fakeWindowSession().posted.push_back(std::move(words));
}
bool CGPreflightPostEventAccess(void) {
    return fakeWindowSession().mayPost;
}
Boolean AXIsProcessTrusted(void) {
    return fakeWindowSession().isTrusted;
}
Boolean IsSecureEventInputEnabled(void) {
    return fakeWindowSession().isInputSecure;
}

CFDictionaryRef CGSessionCopyCurrentDictionary(void) {
    NSDictionary* const facts = fakeWindowSession().facts;
    if (!facts) return nullptr;
    return (__bridge_retained CFDictionaryRef)marrowby::counted([facts mutableCopy]);
}
/// A laptop without another display.
CGError CGGetOnlineDisplayList(uint32_t most, CGDirectDisplayID* displays, uint32_t* count) {
    *count = most > 0 ? 1 : 0;
    if (most > 0) displays[0] = 1;
    return kCGErrorSuccess;
}
bool CGDisplayIsBuiltin(CGDirectDisplayID display) {
    return display == 1;
}
CFTimeInterval CGEventSourceSecondsSinceLastEventType(CGEventSourceStateID, CGEventType) {
    return 1.5;
}
}
