#pragma once

#include "Platforms/Linux/LogindWatcher.h"
#include "Platforms/Linux/ScreenSaverWatcher.h"
#include "Platforms/Linux/SessionTruth.h"
#include "UnlockCore/Platform/LoginSession.h"

#include <optional>

namespace marrowby {

/// The user's session as all sources together know it. A key stands only for what is known. Its
/// sources outlive it.
class LinuxLoginSession final : public LoginSession {
  public:
    /// The display's dictionary tells of the lockers whose windows it sees; none where there is no
    /// display.
    LinuxLoginSession(const LogindWatcher& logind, const ScreenSaverWatcher& savers,
                      const LoginSession* display)
        : logind_(logind), savers_(savers), display_(display) {}

    /// Any thread.
    [[nodiscard]] SessionTruth truth() const;

    [[nodiscard]] std::optional<SessionDictionary> copyCurrentDictionary() const override;

  private:
    const LogindWatcher& logind_;
    const ScreenSaverWatcher& savers_;
    const LoginSession* display_;
};

}  // namespace marrowby
