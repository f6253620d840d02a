// SPDX-License-Identifier: Apache-2.0
#include "Platforms/macOS/Rules/LockMonitor.h"

#include "Platforms/macOS/Rules/LockNotifications.h"

#include <utility>

namespace marrowby {

struct LockMonitor::Registration {
    enum class Center { workspace, distributed };

    Center center;
    const char* name;
    LockEvent event;
    /// The new sleep state, if it changes.
    std::optional<bool> isSleeping;

    static const Registration all[7];
};

const LockMonitor::Registration LockMonitor::Registration::all[7] = {
    {Center::distributed, locknotification::screenIsLocked, LockEvent::screenLocked, {}},
    {Center::distributed, locknotification::screenIsUnlocked, LockEvent::screenUnlocked, {}},
    {Center::distributed, locknotification::screenSaverDidStop, LockEvent::wake, {}},
    {Center::workspace, locknotification::willSleep, LockEvent::willSleep, true},
    {Center::workspace, locknotification::screensDidSleep, LockEvent::willSleep, true},
    {Center::workspace, locknotification::didWake, LockEvent::wake, false},
    {Center::workspace, locknotification::screensDidWake, LockEvent::wake, false},
};

LockMonitor::LockMonitor(NotificationCenter& workspaceCenter, NotificationCenter& distributedCenter)
    : workspaceCenter_(workspaceCenter), distributedCenter_(distributedCenter) {}

LockMonitor::~LockMonitor() {
    LockMonitor::stop();
}

void LockMonitor::start() {
    if (!observers_.empty()) return;
    for (const Registration& registration : Registration::all) {
        NotificationCenter& center = registration.center == Registration::Center::workspace
                                         ? workspaceCenter_
                                         : distributedCenter_;
        const auto token =
            center.observe(registration.name, [this, &registration] { handle(registration); });
        observers_.push_back({center, token});
    }
}

void LockMonitor::stop() {
    for (const Observer& observer : std::exchange(observers_, {}))
        observer.center.remove(observer.token);
}

void LockMonitor::handle(const Registration& registration) {
    if (registration.isSleeping) isSleeping_ = *registration.isSleeping;
    lastEvent_ = registration.event;
    // Copy: the callback may destroy this object.
    if (const auto report = onEvent) report(registration.event);
}

}  // namespace marrowby
