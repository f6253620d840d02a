#include "Platforms/Linux/SessionAnnouncer.h"

#include <utility>

namespace marrowby {

void SessionAnnouncer::update() {
    const SessionTruth now = session_.truth();
    for (const auto& [center, name] : announcements(std::exchange(truth_, now), now)) {
        switch (center) {
            case SessionAnnouncement::Center::workspace:
                workspaceCenter_.post(name);
                break;
            case SessionAnnouncement::Center::distributed:
                distributedCenter_.post(name);
                break;
        }
    }
}

}  // namespace marrowby
