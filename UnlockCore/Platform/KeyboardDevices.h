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
        /// Sent by a program; systems that cannot tell say no.
        bool isSynthetic = false;
    };
    /// Destroying it ends listening; no callback comes after that.
    class Listening {
      public:
        virtual ~Listening() = default;
    };

    virtual ~KeyboardDevices() = default;
    /// Whether the user lets this process watch keys, as far as can be told without asking them.
    [[nodiscard]] virtual bool hasListenAccess() const = 0;
    /// Nothing when the devices cannot be opened.
    [[nodiscard]] virtual std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) = 0;
};

}  // namespace marrowby
