// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XKeyGuard.h"

#include "Platforms/Linux/X11/ClientPrograms.h"

#include <array>
#include <cstdint>
#include <utility>
#include <vector>

#include <xcb/xtest.h>

namespace marrowby {
namespace {

constexpr std::uint8_t eventsToGrabberOnly = 0;

/// Modifiers that may be held or locked while unmodified keys are typed. With any other one a
/// hotkey's grab would make a grab of ours fail.
constexpr std::array<std::uint16_t, 8> harmlessModifiers{
    0,
    XCB_MOD_MASK_SHIFT,
    XCB_MOD_MASK_LOCK,
    XCB_MOD_MASK_2,
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK,
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_2,
    XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2,
    XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_LOCK | XCB_MOD_MASK_2};

xcb_void_cookie_t grabKey(const XcbConnection& connection, xcb_keycode_t key,
                          std::uint16_t modifiers) {
    return xcb_grab_key_checked(connection.get(), eventsToGrabberOnly, connection.root(), modifiers,
                                key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
}

bool isGranted(const XcbConnection& connection, xcb_void_cookie_t cookie) {
    const XcbConnection::Owned<xcb_generic_error_t> error(
        xcb_request_check(connection.get(), cookie));
    return !error && !connection.hasError();
}

}  // namespace

void XKeyGuard::arm() {
    isArmed_ = true;
    if (isGranted(connection_, grabKey(connection_, XCB_GRAB_ANY, XCB_MOD_MASK_ANY))) {
        covered_.set();
        return;
    }
    const auto* setup = xcb_get_setup(connection_.get());
    std::vector<std::pair<xcb_keycode_t, xcb_void_cookie_t>> asked;
    for (unsigned key = setup->min_keycode; key <= setup->max_keycode; ++key) {
        const auto code = static_cast<xcb_keycode_t>(key);
        asked.emplace_back(code, grabKey(connection_, code, XCB_MOD_MASK_ANY));
    }
    std::vector<std::pair<xcb_keycode_t, xcb_void_cookie_t>> askedAgain;
    for (const auto& [key, cookie] : asked) {
        covered_[key] = isGranted(connection_, cookie);
        if (covered_[key]) continue;
        for (const auto modifiers : harmlessModifiers)
            askedAgain.emplace_back(key, grabKey(connection_, key, modifiers));
    }
    // All must be granted: a modifier may be pressed before the key arrives.
    for (std::size_t i = 0; i < askedAgain.size(); ++i) {
        const auto& [key, cookie] = askedAgain[i];
        const bool granted = isGranted(connection_, cookie);
        covered_[key] = granted && (i % harmlessModifiers.size() == 0 || covered_[key]);
    }
}

void XKeyGuard::release() {
    if (!std::exchange(isArmed_, false)) return;
    covered_.reset();
    xcb_ungrab_key(connection_.get(), XCB_GRAB_ANY, connection_.root(), XCB_MOD_MASK_ANY);
    connection_.flush();
}

bool XKeyGuard::isKeyboardHeld() const {
    return send({}, nullptr) == Sent::toHolder;
}

bool XKeyGuard::isUnchanged(const XKeyHolder& holder) const {
    xcb_connection_t* const xcb = connection_.get();
    const auto processCookie = ClientPrograms::askProcess(connection_, holder.client);
    std::vector<xcb_get_window_attributes_cookie_t> cookies;
    cookies.reserve(holder.covers.size());
    for (const auto window : holder.covers)
        cookies.push_back(xcb_get_window_attributes(xcb, window));
    bool isUnchanged = ClientPrograms::process(connection_, processCookie) == holder.process;
    for (const auto cookie : cookies) {
        const auto attributes = connection_.reply<xcb_get_window_attributes_reply>(cookie);
        isUnchanged = isUnchanged && attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
    }
    return isUnchanged;
}

XKeyGuard::Sent XKeyGuard::send(std::span<const Event> events, const XKeyHolder* holder) const {
    return Burst(*this, holder).send(events);
}

XKeyGuard::Burst::Burst(const XKeyGuard& guard, const XKeyHolder* holder)
    : connection_(guard.connection_), isHolders_([&] {
          xcb_grab_server(connection_.get());
          return holder == nullptr || guard.isUnchanged(*holder);
      }()) {}

XKeyGuard::Burst::~Burst() {
    xcb_ungrab_server(connection_.get());
    connection_.flush();
}

XKeyGuard::Sent XKeyGuard::Burst::send(std::span<const Event> events) const {
    if (!isHolders_) return connection_.hasError() ? Sent::displayLost : Sent::toNobody;
    xcb_connection_t* const xcb = connection_.get();
    // Flushed first, so that the following requests go out in one write.
    connection_.flush();
    const auto grabCookie =
        xcb_grab_keyboard(xcb, eventsToGrabberOnly, connection_.root(), XCB_CURRENT_TIME,
                          XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    for (const Event& event : events) {
        xcb_test_fake_input(xcb, event.down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, event.key,
                            XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
    }
    xcb_ungrab_keyboard(xcb, XCB_CURRENT_TIME);
    // The reply arrives after any key event that came back to us.
    const auto lastCookie = xcb_get_input_focus(xcb);
    connection_.flush();
    const auto grab = connection_.reply<xcb_grab_keyboard_reply>(grabCookie);
    const auto last = connection_.reply<xcb_get_input_focus_reply>(lastCookie);
    if (!grab || !last) return Sent::displayLost;
    return grab->status == XCB_GRAB_STATUS_ALREADY_GRABBED ? Sent::toHolder : Sent::toNobody;
}

}  // namespace marrowby
