#include "Platforms/Linux/X11KeyboardDevices.h"

#include "Platforms/Linux/XcbConnection.h"
#include "Platforms/Linux/XcbEventPump.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string_view>
#include <utility>

#include <xcb/xinput.h>
#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

constexpr KeyboardDevices::Match keyboards{.usagePage = 1, .usage = 6};
constexpr std::uint32_t keyPage = 7;
constexpr std::uint32_t spacebar = 44;

/// Raw keys arrive during other clients' grabs from XInput 2.1 on; the version holds per
/// connection.
bool speaksXInput(const XcbConnection& connection, std::uint8_t& opcode) {
    const auto* extension = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!extension || !extension->present) return false;
    opcode = extension->major_opcode;
    const auto version = connection.reply<xcb_input_xi_query_version_reply>(
        xcb_input_xi_query_version(connection.get(), 2, 2));
    return version && (version->major_version > 2 ||
                       (version->major_version == 2 && version->minor_version >= 1));
}

std::set<xcb_keycode_t> spaceKeycodes(const XcbConnection& connection) {
    const xcb_setup_t& setup = *xcb_get_setup(connection.get());
    const xcb_keycode_t first = setup.min_keycode;
    const auto count = static_cast<std::uint8_t>(setup.max_keycode - first + 1);
    const auto mapping = connection.reply<xcb_get_keyboard_mapping_reply>(
        xcb_get_keyboard_mapping(connection.get(), first, count));
    std::set<xcb_keycode_t> keycodes;
    if (!mapping || mapping->keysyms_per_keycode == 0) return keycodes;
    const std::span keysyms(
        xcb_get_keyboard_mapping_keysyms(mapping.get()),
        static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get())));
    for (std::size_t i = 0; i < keysyms.size(); i += mapping->keysyms_per_keycode) {
        if (keysyms[i] == XKB_KEY_space) {
            keycodes.insert(static_cast<xcb_keycode_t>(first + i / mapping->keysyms_per_keycode));
        }
    }
    return keycodes;
}

/// The devices behind XTEST: each master keyboard has one, by the server's own naming.
std::set<xcb_input_device_id_t> syntheticKeyboards(const XcbConnection& connection) {
    std::set<xcb_input_device_id_t> devices;
    const auto answer = connection.reply<xcb_input_xi_query_device_reply>(
        xcb_input_xi_query_device(connection.get(), XCB_INPUT_DEVICE_ALL));
    if (!answer) return devices;
    for (auto infos = xcb_input_xi_query_device_infos_iterator(answer.get()); infos.rem > 0;
         xcb_input_xi_device_info_next(&infos)) {
        const std::string_view name(
            xcb_input_xi_device_info_name(infos.data),
            static_cast<std::size_t>(xcb_input_xi_device_info_name_length(infos.data)));
        if (name.ends_with("XTEST keyboard")) devices.insert(infos.data->deviceid);
    }
    return devices;
}

}  // namespace

struct X11KeyboardDevices::Display {
    std::unique_ptr<XcbConnection> connection;
};

/// Listens over a connection of its own, which ends with it.
class X11KeyboardDevices::RawKeys final : public Listening {
  public:
    [[nodiscard]] static std::unique_ptr<RawKeys> create(
        const std::string& displayName, std::function<void(const InputValue&)> onValue) {
        auto opened = XcbConnection::create(displayName);
        if (!opened) return nullptr;
        std::shared_ptr<const XcbConnection> connection = std::move(*opened);
        std::uint8_t opcode = 0;
        if (!speaksXInput(*connection, opcode)) return nullptr;

        const struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } selection{
            .head = {.deviceid = XCB_INPUT_DEVICE_ALL_MASTER, .mask_len = 1},
            .mask = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_KEY_RELEASE,
        };
        const auto cookie = xcb_input_xi_select_events_checked(
            connection->get(), connection->root(), 1, &selection.head);
        const XcbConnection::Owned<xcb_generic_error_t> error(
            xcb_request_check(connection->get(), cookie));
        if (error || connection->hasError()) return nullptr;

        return std::unique_ptr<RawKeys>(
            new RawKeys(std::move(connection), opcode, std::move(onValue)));
    }

  private:
    RawKeys(std::shared_ptr<const XcbConnection> connection, std::uint8_t opcode,
            std::function<void(const InputValue&)> onValue)
        : connection_(std::move(connection)),
          opcode_(opcode),
          syntheticKeyboards_(syntheticKeyboards(*connection_)),
          onValue_(std::move(onValue)),
          spaceKeycodes_(spaceKeycodes(*connection_)) {
        pump_.emplace(connection_, XcbEventPump::Handlers{
                                       .onEvent = [this](const auto& event) { handle(event); },
                                       .onCaughtUp = [this] { refresh(); },
                                       .onLost = [] {},
                                   });
    }

    void handle(const xcb_generic_event_t& event) {
        const int type = event.response_type & 0x7F;
        if (type == XCB_MAPPING_NOTIFY) mappingIsStale_ = true;
        if (type != XCB_GE_GENERIC) return;
        const auto& key = reinterpret_cast<const xcb_input_raw_key_press_event_t&>(event);
        if (key.extension != opcode_) return;
        const bool down = key.event_type == XCB_INPUT_RAW_KEY_PRESS;
        if (!down && key.event_type != XCB_INPUT_RAW_KEY_RELEASE) return;
        if (!spaceKeycodes_.contains(static_cast<xcb_keycode_t>(key.detail))) return;
        // A copy, for its receiver may stop listening.
        const auto report = onValue_;
        report({.usagePage = keyPage,
                .usage = spacebar,
                .value = down ? 1 : 0,
                .isSynthetic = syntheticKeyboards_.contains(key.sourceid)});
    }

    void refresh() {
        if (std::exchange(mappingIsStale_, false)) spaceKeycodes_ = spaceKeycodes(*connection_);
    }

    const std::shared_ptr<const XcbConnection> connection_;
    const std::uint8_t opcode_;
    const std::set<xcb_input_device_id_t> syntheticKeyboards_;
    const std::function<void(const InputValue&)> onValue_;
    std::set<xcb_keycode_t> spaceKeycodes_;
    bool mappingIsStale_ = false;
    std::optional<XcbEventPump> pump_;
};

std::expected<std::unique_ptr<X11KeyboardDevices>, std::string> X11KeyboardDevices::create(
    const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    std::uint8_t opcode = 0;
    if (!speaksXInput(**connection, opcode)) {
        return std::unexpected("The display “" + displayName + "” doesn’t tell its keys.");
    }
    return std::unique_ptr<X11KeyboardDevices>(new X11KeyboardDevices(
        std::make_unique<const Display>(Display{.connection = std::move(*connection)})));
}

X11KeyboardDevices::X11KeyboardDevices(std::unique_ptr<const Display> display)
    : display_(std::move(display)) {}

X11KeyboardDevices::~X11KeyboardDevices() = default;

bool X11KeyboardDevices::hasListenAccess() const {
    display_->connection->discardEvents();
    return !display_->connection->hasError();
}

std::unique_ptr<KeyboardDevices::Listening> X11KeyboardDevices::open(
    Match match, std::function<void(const InputValue&)> onValue) {
    if (match != keyboards) return nullptr;
    return RawKeys::create(display_->connection->displayName(), std::move(onValue));
}

}  // namespace marrowby
