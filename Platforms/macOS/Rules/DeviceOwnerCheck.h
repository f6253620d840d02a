// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Platforms/macOS/Rules/OwnerAuthentication.h"
#include "UnlockCore/Platform/OwnerCheck.h"

#include <cstdint>

namespace marrowby {

/// LAPolicyDeviceOwnerAuthentication: biometrics, watch or password.
inline constexpr std::int64_t deviceOwnerAuthentication = 2;

/// Asks for biometrics, a paired watch or the account password, without reusing an earlier answer.
class DeviceOwnerCheck final : public OwnerCheck {
  public:
    explicit DeviceOwnerCheck(OwnerAuthentication& authentication)
        : authentication_(authentication) {}
    [[nodiscard]] std::expected<void, std::string> canConfirm() override;
    void confirmOwner(const std::string& reason, Completion completion) override;

  private:
    OwnerAuthentication& authentication_;
};

}  // namespace marrowby
