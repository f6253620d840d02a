// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/X11/X11LockState.h"

#include "Platforms/Linux/X11/X11LockerWindowReader.h"
#include "Platforms/Linux/X11/XcbConnection.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace marrowby {

struct X11LockState::Display {
    explicit Display(std::unique_ptr<XcbConnection> opened)
        : connection(std::move(opened)),
          reader(*connection),
          hasTerminal(connection->atom("XFree86_has_VT")) {}

    /// X servers on a virtual terminal publish whether they are in front; others always are.
    [[nodiscard]] bool isInFront() const {
        const auto property = connection->reply<xcb_get_property_reply>(xcb_get_property(
            connection->get(), 0, connection->root(), hasTerminal, XCB_ATOM_INTEGER, 0, 1));
        if (!property || property->format != 32 ||
            xcb_get_property_value_length(property.get()) < 4) {
            return true;
        }
        return *static_cast<const std::int32_t*>(xcb_get_property_value(property.get())) != 0;
    }

    std::unique_ptr<XcbConnection> connection;
    X11LockerWindowReader reader;
    xcb_atom_t hasTerminal;
};

std::expected<std::unique_ptr<X11LockState>, std::string> X11LockState::create(
    const std::string& displayName) {
    auto connection = XcbConnection::create(displayName);
    if (!connection) return std::unexpected(connection.error());
    return std::unique_ptr<X11LockState>(
        new X11LockState(std::make_unique<const Display>(std::move(*connection))));
}

X11LockState::X11LockState(std::unique_ptr<const Display> display) : display_(std::move(display)) {}

X11LockState::~X11LockState() = default;

// xcb connections are thread-safe.
LockState X11LockState::state() const {
    display_->connection->discardEvents();
    const bool isInFront = display_->isInFront();
    const auto lockers = display_->reader.read();
    if (!lockers) return {};
    return {.isScreenLocked = lockHolder(*lockers).has_value(), .isOnConsole = isInFront};
}

SessionLocker X11LockState::locker() const {
    display_->connection->discardEvents();
    const auto lockers = display_->reader.read();
    if (!lockers) return {.isPresent = false};
    const auto holder = lockHolder(*lockers);
    return {.isPresent = holder.has_value() || lockers->hasScreenSaver,
            .untyped = holder ? untypedName(holder->locker) : std::string_view()};
}

}  // namespace marrowby
