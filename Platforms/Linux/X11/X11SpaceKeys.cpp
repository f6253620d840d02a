// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11SpaceKeys.h"

#include "Platforms/Linux/X11/XRawKeys.h"
#include "Platforms/Linux/X11/XcbConnection.h"
#include "Platforms/Linux/X11/XcbEventPump.h"
#include "UnlockCore/Foundation/Phrase.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <utility>

#include <xkbcommon/xkbcommon-keysyms.h>

namespace marrowby {
namespace {

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

}  // namespace

struct X11SpaceKeys::Display {
    std::unique_ptr<XcbConnection> connection;
};

/// Listens on its own connection, which it closes when destroyed.
class X11SpaceKeys::RawKeys final : public Listening {
  public:
    [[nodiscard]] static std::unique_ptr<RawKeys> create(const std::string& displayName,
                                                         std::function<void(Press)> onPress) {
        auto opened = XcbConnection::create(displayName);
        if (!opened) return nullptr;
        std::shared_ptr<const XcbConnection> connection = std::move(*opened);
        auto rawKeys = XRawKeys::select(*connection, XRawKeys::Whose::everybodys);
        if (!rawKeys) return nullptr;
        return std::unique_ptr<RawKeys>(
            new RawKeys(std::move(connection), *std::move(rawKeys), std::move(onPress)));
    }

  private:
    RawKeys(std::shared_ptr<const XcbConnection> connection, XRawKeys rawKeys,
            std::function<void(Press)> onPress)
        : connection_(std::move(connection)),
          rawKeys_(std::move(rawKeys)),
          onPress_(std::move(onPress)),
          spaceKeycodes_(spaceKeycodes(*connection_)) {
        pump_.emplace(connection_, XcbEventPump::Handlers{
                                       .onEvent = [this](const auto& event) { handle(event); },
                                       .onCaughtUp = [this] { refresh(); },
                                       .onLost = [] {},
                                   });
    }

    void handle(const xcb_generic_event_t& event) {
        if ((event.response_type & 0x7F) == XCB_MAPPING_NOTIFY) mappingIsStale_ = true;
        const auto key = rawKeys_.read(event);
        if (!key || !key->down) return;
        if (!spaceKeycodes_.contains(static_cast<xcb_keycode_t>(key->keycode))) return;
        // Copy: the callback may stop listening.
        const auto report = onPress_;
        report({.isSynthetic = key->isSynthetic});
    }

    void refresh() {
        if (std::exchange(mappingIsStale_, false)) spaceKeycodes_ = spaceKeycodes(*connection_);
    }

    const std::shared_ptr<const XcbConnection> connection_;
    const XRawKeys rawKeys_;
    const std::function<void(Press)> onPress_;
    std::set<xcb_keycode_t> spaceKeycodes_;
    bool mappingIsStale_ = false;
    std::optional<XcbEventPump> pump_;
};

std::expected<std::unique_ptr<X11SpaceKeys>, std::string> X11SpaceKeys::create(
    const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    if (!XRawKeys::areOffered(**connection)) {
        return std::unexpected(translated("The display “{display}” doesn’t tell its keys.",
                                          {{"display", displayName}}));
    }
    return std::unique_ptr<X11SpaceKeys>(new X11SpaceKeys(
        std::make_unique<const Display>(Display{.connection = std::move(*connection)})));
}

X11SpaceKeys::X11SpaceKeys(std::unique_ptr<const Display> display) : display_(std::move(display)) {}

X11SpaceKeys::~X11SpaceKeys() = default;

bool X11SpaceKeys::hasListenAccess() const {
    display_->connection->discardEvents();
    return !display_->connection->hasError();
}

std::unique_ptr<SpaceKeys::Listening> X11SpaceKeys::listen(std::function<void(Press)> onPress) {
    return RawKeys::create(display_->connection->displayName(), std::move(onPress));
}

}  // namespace marrowby
