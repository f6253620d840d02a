#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include <linux/input.h>

namespace marrowby {

/// The kernel's input devices in one folder, as far as this user may read them; they come and go.
/// One thread.
class EvdevDevices {
  public:
    struct Description {
        /// Keys, buttons, pointers; not lids and jacks.
        bool isForUsers = false;
        bool hasSpaceKey = false;
        /// Made by a program.
        bool isVirtual = false;
    };
    /// What the kernel says about an open device; nothing where it is no input device. From then on
    /// its times are uptimes.
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
    /// By path.
    [[nodiscard]] const std::map<std::string, Device>& all() const { return devices_; }

    /// Opens what is new.
    void refresh();
    /// Closes what is no longer there.
    void prune();
    /// Takes all events that wait at a device; false when it is gone, which closes it.
    bool drain(const std::string& path, const std::function<void(const input_event&)>& onEvent);

  private:
    const std::filesystem::path folder_;
    const Describe describe_;
    std::map<std::string, Device> devices_;
};

}  // namespace marrowby
