// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace marrowby {

/// Raw input values of HID devices, unaffected by applications and grabs. Main thread, callbacks
/// included.
class KeyboardDevices {
  public:
    struct Match {
        std::uint32_t usagePage = 0;
        std::uint32_t usage = 0;
        friend bool operator==(const Match&, const Match&) = default;
    };
    /// A new value of an element (a key): 1 for down, 0 for up.
    struct InputValue {
        std::uint32_t usagePage = 0;
        std::uint32_t usage = 0;
        std::int64_t value = 0;
    };
    /// Destroying it ends listening: no callback comes after that.
    class Listening {
      public:
        virtual ~Listening() = default;
    };

    virtual ~KeyboardDevices() = default;
    /// Whether this process may listen to keys; does not prompt.
    [[nodiscard]] virtual bool hasListenAccess() const = 0;
    /// Prompts the user where the system does so, and returns at once; hasListenAccess() shows the
    /// answer.
    virtual void requestListenAccess() {}
    /// Null when the devices cannot be opened.
    [[nodiscard]] virtual std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) = 0;
};

/// IOReturn codes of opening all keyboards.
namespace hidmanager {

inline constexpr std::uint32_t success = 0;
/// Another program has seized one of them; the others are open.
inline constexpr std::uint32_t exclusiveAccess = 0xE00002C5;

[[nodiscard]] constexpr bool isOpen(std::uint32_t status) {
    return status == success || status == exclusiveAccess;
}

}  // namespace hidmanager

}  // namespace marrowby
