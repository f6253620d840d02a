// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include <linux/input.h>

namespace marrowby {

/// The readable evdev devices of one folder; they come and go. One thread.
class EvdevDevices {
  public:
    struct Description {
        /// Has keys, buttons or a pointer; not a lid switch or jack.
        bool isForUsers = false;
        bool hasSpaceKey = false;
        /// Created through uinput.
        bool isVirtual = false;
    };
    /// Queries an open device and switches its timestamps to the monotonic clock; `nullopt` when it
    /// is no input device.
    using Describe = std::function<std::optional<Description>(int descriptor,
                                                              const std::filesystem::path& device)>;
    [[nodiscard]] static std::optional<Description> describe(int descriptor,
                                                             const std::filesystem::path& device);

    struct Device {
        int descriptor = -1;
        Description description;
    };

    explicit EvdevDevices(std::filesystem::path folder, Describe describe = EvdevDevices::describe);
    ~EvdevDevices();
    EvdevDevices(const EvdevDevices&) = delete;
    EvdevDevices& operator=(const EvdevDevices&) = delete;

    [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }
    [[nodiscard]] const std::map<std::string, Device>& all() const { return devices_; }

    void refresh();
    void prune();
    /// Reads all pending events of a device; closes it and returns false when it is gone.
    bool drain(const std::string& path, const std::function<void(const input_event&)>& onEvent);

  private:
    const std::filesystem::path folder_;
    const Describe describe_;
    std::map<std::string, Device> devices_;
};

}  // namespace marrowby
