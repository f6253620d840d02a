// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XKeyDeliveries.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <span>
#include <utility>

#include <poll.h>
#include <xcb/xcbext.h>
#include <xcb/xinput.h>

namespace marrowby {
namespace {

constexpr std::uint8_t fromServer = 0;
constexpr std::uint8_t fromClient = 1;
constexpr std::uint8_t clientEnded = 3;
constexpr std::uint8_t startOfData = 4;
constexpr std::uint8_t endOfData = 5;
constexpr std::size_t eventSize = 32;
constexpr std::uint8_t lastEvent = 127;
constexpr std::chrono::seconds answerLimit{2};

bool isOffered(const XcbConnection& connection, xcb_extension_t* id) {
    const auto* extension = xcb_get_extension_data(connection.get(), id);
    return extension != nullptr && extension->present != 0;
}

}  // namespace

std::unique_ptr<XKeyDeliveries> XKeyDeliveries::create(const XcbConnection& control) {
    auto data = XcbConnection::create(control.displayName());
    if (!data) return nullptr;
    std::unique_ptr<XKeyDeliveries> deliveries(new XKeyDeliveries(control, std::move(*data)));
    return deliveries->start() ? std::move(deliveries) : nullptr;
}

XKeyDeliveries::XKeyDeliveries(const XcbConnection& control, std::unique_ptr<XcbConnection> data)
    : control_(control), data_(std::move(data)), context_(xcb_generate_id(control.get())) {}

XKeyDeliveries::~XKeyDeliveries() {
    xcb_record_free_context(control_.get(), context_);
    (void)control_.reply<xcb_get_input_focus_reply>(xcb_get_input_focus(control_.get()));
    while (!isLost() && (take() || wait(answerLimit))) {
    }
    // A reply of this length overwrites libxcb's buffer, which still holds recorded keys.
    const auto* setup = xcb_get_setup(data_->get());
    const auto keys = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    (void)data_->reply<xcb_get_keyboard_mapping_reply>(
        xcb_get_keyboard_mapping(data_->get(), setup->min_keycode, keys));
}

bool XKeyDeliveries::start() {
    if (!isOffered(control_, &xcb_record_id) || !isOffered(*data_, &xcb_record_id)) return false;
    if (isOffered(control_, &xcb_input_id)) {
        const auto* input = xcb_get_extension_data(control_.get(), &xcb_input_id);
        inputOpcode_ = input->major_opcode;
        deviceKeyPress_ =
            static_cast<std::uint8_t>(input->first_event + XCB_INPUT_DEVICE_KEY_PRESS);
    }
    // A single range: with several, the server was seen to omit XInput 2 events.
    xcb_record_range_t range{};
    range.delivered_events = {.first = XCB_KEY_PRESS, .last = lastEvent};
    range.client_died = 1;
    range.core_requests = {.first = XCB_QUERY_POINTER, .last = XCB_QUERY_POINTER};
    const xcb_record_client_spec_t everybody = XCB_RECORD_CS_ALL_CLIENTS;
    const XcbConnection::Owned<xcb_generic_error_t> error(xcb_request_check(
        control_.get(),
        xcb_record_create_context_checked(control_.get(), context_, 0, 1, 1, &everybody, &range)));
    if (error || control_.hasError()) return false;
    stream_ = xcb_record_enable_context(data_->get(), context_);
    data_->flush();
    while (!isLost()) {
        if (const auto part = take()) return part->category == startOfData;
        if (!wait(answerLimit)) return false;
    }
    return false;
}

void XKeyDeliveries::Wipe::operator()(xcb_record_enable_context_reply_t* reply) const {
    ::explicit_bzero(reply, eventSize + std::size_t{4} * reply->length);
    std::free(reply);
}

XKeyDeliveries::Part XKeyDeliveries::take() {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(data_->get(), stream_.sequence, &reply, &error) == 0) return nullptr;
    const XcbConnection::Owned<xcb_generic_error_t> owned(error);
    Part part(static_cast<xcb_record_enable_context_reply_t*>(reply));
    hasEnded_ |= !part || part->category == endOfData;
    return part;
}

std::vector<std::uint32_t> XKeyDeliveries::receivers() {
    std::vector<std::uint32_t> found;
    while (const auto part = hasEnded_ ? nullptr : take()) {
        if (part->category == fromClient)
            noteQuestions(part->xid_base, std::size_t{4} * part->length);
        // Another client may get the same ID.
        if (part->category == clientEnded) rawKeys_.erase(part->xid_base);
        if (part->category != fromServer) continue;
        const std::span events(
            xcb_record_enable_context_data(part.get()),
            static_cast<std::size_t>(xcb_record_enable_context_data_length(part.get())));
        for (std::size_t at = 0; at + eventSize <= events.size(); at += eventSize) {
            xcb_ge_generic_event_t event{};
            std::memcpy(&event, &events[at], offsetof(xcb_ge_generic_event_t, pad0));
            // Sent by a client (SendEvent), not delivered by the server.
            if ((event.response_type & 0x80) != 0) continue;
            const auto type = static_cast<std::uint8_t>(event.response_type & 0x7F);
            if (type == XCB_GE_GENERIC && event.extension == inputOpcode_ &&
                event.event_type >= XCB_INPUT_RAW_KEY_PRESS &&
                event.event_type <= XCB_INPUT_RAW_MOTION) {
                auto& keys = rawKeys_[part->xid_base];
                ++keys.received;
                ++keys.unhandled;
            }
            const bool isKey = type == XCB_KEY_PRESS || type == XCB_KEY_RELEASE ||
                               (deviceKeyPress_ != 0 &&
                                (type == deviceKeyPress_ || type == deviceKeyPress_ + 1)) ||
                               (type == XCB_GE_GENERIC && event.extension == inputOpcode_ &&
                                (event.event_type == XCB_INPUT_KEY_PRESS ||
                                 event.event_type == XCB_INPUT_KEY_RELEASE));
            if (isKey && std::ranges::find(found, part->xid_base) == found.end())
                found.push_back(part->xid_base);
        }
    }
    return found;
}

void XKeyDeliveries::noteQuestions(std::uint32_t client, std::size_t bytes) {
    const auto found = rawKeys_.find(client);
    if (found == rawKeys_.end()) return;
    auto& unhandled = found->second.unhandled;
    unhandled -= std::min(unhandled, bytes / sizeof(xcb_query_pointer_request_t));
}

XKeyDeliveries::RawKeys XKeyDeliveries::rawKeys(std::uint32_t client) const {
    const auto found = rawKeys_.find(client);
    return found == rawKeys_.end() ? RawKeys() : found->second;
}

bool XKeyDeliveries::wait(std::chrono::milliseconds limit) const {
    pollfd descriptor{.fd = data_->fd(), .events = POLLIN, .revents = 0};
    return ::poll(&descriptor, 1, static_cast<int>(limit.count())) > 0;
}

}  // namespace marrowby
