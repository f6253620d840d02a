#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace marrowby {

/// Raw input values of devices, below any application and any grab. Main thread; the callback comes
/// on the main thread too.
class KeyboardDevices {
  public:
    /// Which devices: HID usage page and usage of the device itself.
    struct Match {
        std::uint32_t usagePage = 0;
        std::uint32_t usage = 0;
        friend bool operator==(const Match&, const Match&) = default;
    };
    /// One value of one element (a key): 1 for down, 0 for up.
    struct InputValue {
        std::uint32_t usagePage = 0;
        std::uint32_t usage = 0;
        std::int64_t value = 0;
    };
    /// Destroying it ends listening; no callback comes after that.
    class Listening {
      public:
        virtual ~Listening() = default;
    };

    virtual ~KeyboardDevices() = default;
    /// Whether the user lets this process watch keys, as far as can be told without asking them.
    [[nodiscard]] virtual bool hasListenAccess() const = 0;
    /// Has the system ask the user, where it does so; the answer shows in the former. Returns at
    /// once.
    virtual void requestListenAccess() {}
    /// Nothing when the devices cannot be opened.
    [[nodiscard]] virtual std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) = 0;
};

/// What the HID manager says to opening all keyboards.
namespace hidmanager {

inline constexpr std::uint32_t success = 0;
/// Another program has seized one of them; the others are open.
inline constexpr std::uint32_t exclusiveAccess = 0xE00002C5;

[[nodiscard]] constexpr bool isOpen(std::uint32_t status) {
    return status == success || status == exclusiveAccess;
}

}  // namespace hidmanager

}  // namespace marrowby
