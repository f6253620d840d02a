#pragma once

#include "UnlockCore/Platform/LoginSession.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// The session behind an X display. Each call asks the X server, so that it may wait for it; a lost
/// display is no session. Any thread.
class X11LoginSession final : public LoginSession {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11LoginSession>, std::string> create(
        const std::string& displayName);
    ~X11LoginSession() override;

    [[nodiscard]] std::optional<SessionDictionary> copyCurrentDictionary() const override;

  private:
    struct Display;
    explicit X11LoginSession(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
