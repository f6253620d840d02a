// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/XRawKeys.h"

#include <string_view>
#include <utility>

namespace marrowby {
namespace {

bool selectRawKeys(const XcbConnection& connection, xcb_input_device_id_t device) {
    const struct {
        xcb_input_event_mask_t head;
        std::uint32_t mask;
    } selection{
        .head = {.deviceid = device, .mask_len = 1},
        .mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE,
    };
    const auto cookie =
        xcb_input_xi_select_events_checked(connection.get(), connection.root(), 1, &selection.head);
    const XcbConnection::Owned<xcb_generic_error_t> error(
        xcb_request_check(connection.get(), cookie));
    return !error && !connection.hasError();
}

struct Keyboards {
    std::set<xcb_input_device_id_t> users;
    /// The server's XTEST keyboard, by name. XTEST devices of other master keyboards count as the
    /// user's.
    std::set<xcb_input_device_id_t> synthetic;
};

Keyboards keyboards(const XcbConnection& connection) {
    Keyboards found;
    const auto answer = connection.reply<xcb_input_xi_query_device_reply>(
        xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL));
    if (!answer) return found;
    for (auto infos = xcb_input_xi_query_device_infos_iterator(answer.get()); infos.rem > 0;
         xcb_input_xi_device_info_next(&infos)) {
        if (infos.data->type != XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD) continue;
        const std::string_view name(
            xcb_input_xi_device_info_name(infos.data),
            static_cast<std::size_t>(xcb_input_xi_device_info_name_length(infos.data)));
        const bool isSynthetic = name == "Virtual core XTEST keyboard";
        (isSynthetic ? found.synthetic : found.users).insert(infos.data->deviceid);
    }
    return found;
}

}  // namespace

bool XRawKeys::areOffered(const XcbConnection& connection) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!extension || !extension->present) return false;
    // Raw events bypass other clients' grabs from XInput 2.1 on; the version is negotiated per
    // connection.
    const auto version = connection.reply<xcb_input_xi_query_version_reply>(
        xcb_input_xi_query_version(connection.get(), 2, 2));
    return version && (version->major_version > 2 ||
                       (version->major_version == 2 && version->minor_version >= 1));
}

std::optional<XRawKeys> XRawKeys::select(const XcbConnection& connection, Whose whose) {
    if (!areOffered(connection)) return std::nullopt;
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
    Keyboards found = keyboards(connection);
    switch (whose) {
        case Whose::everybodys:
            if (!selectRawKeys(connection, XCB_INPUT_DEVICE_ALL_MASTER)) return std::nullopt;
            break;
        case Whose::usersOnly:
            for (const auto device : found.users)
                (void)selectRawKeys(connection, device);
            break;
    }
    return XRawKeys(extension->major_opcode, std::move(found.synthetic));
}

std::optional<XRawKeys::Key> XRawKeys::read(const xcb_generic_event_t& event) const {
    if ((event.response_type & 0x7F) != XCB_GE_GENERIC) return std::nullopt;
    const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
    const bool down = key.event_type == XCB_INPUT_RAW_KEY_PRESS;
    if (key.extension != opcode_ || (!down && key.event_type != XCB_INPUT_RAW_KEY_RELEASE)) {
        return std::nullopt;
    }
    return Key{.keycode = key.detail,
               .down = down,
               .isSynthetic = syntheticKeyboards_.contains(key.sourceid)};
}

}  // namespace marrowby
