// SPDX-License-Identifier: Apache-2.0
#include "Platforms/Linux/Input/EvdevInputIdle.h"

#include "Platforms/Linux/Desktop/UnixClock.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace marrowby {

EvdevInputIdle::EvdevInputIdle(std::filesystem::path folder, EvdevDevices::Describe describe)
    : devices_(std::move(folder), std::move(describe)) {}

std::optional<TimeInterval> EvdevInputIdle::sinceLastInput() const {
    devices_.refresh();
    const TimeInterval now = systemUptime();
    if (!lastInput_) lastInput_ = now;
    std::vector<std::string> paths;
    for (const auto& [path, device] : devices_.all())
        paths.push_back(path);
    for (const auto& path : paths) {
        devices_.drain(path, [this](const input_event& event) {
            const TimeInterval time = std::chrono::seconds(event.input_event_sec) +
                                      std::chrono::microseconds(event.input_event_usec);
            lastInput_ = std::max(*lastInput_, time);
        });
    }
    if (devices_.all().empty()) return std::nullopt;
    // An event may be newer than `now`.
    return std::max(now - *lastInput_, TimeInterval::zero());
}

TimeInterval EvdevInputIdle::systemUptime() const {
    return unixtime::uptime();
}

}  // namespace marrowby
