// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/LoginSession.h"

namespace marrowby {

/// The window server's dictionary of this process's session; `nullopt` without a session, as over
/// ssh.
class CoreGraphicsLoginSession final : public LoginSession {
  public:
    [[nodiscard]] std::optional<SessionDictionary> copyCurrentDictionary() const override;
};

}  // namespace marrowby
