// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>

namespace marrowby {

/// The library of the private entry points, and their names in SkyLightFunctions' order.
namespace skylight {
inline constexpr const char* path =
    "/System/Library/PrivateFrameworks/SkyLight.framework/Versions/A/SkyLight";
inline constexpr std::array symbols{"SLSMainConnectionID",
                                    "SLSSpaceCreate",
                                    "SLSSpaceSetAbsoluteLevel",
                                    "SLSShowSpaces",
                                    "SLSSpaceAddWindowsAndRemoveFromSpaces",
                                    "SLSRemoveWindowsFromSpaces"};
}  // namespace skylight

/// Private entry points of the window server, which not every system has. Results are ignored. Main
/// thread.
class SkyLightFunctions {
  public:
    using Connection = std::uint32_t;
    /// As wide as the window server's; a narrower argument would leave half a register undefined.
    using Space = std::uint64_t;

    virtual ~SkyLightFunctions() = default;
    [[nodiscard]] virtual Connection mainConnectionID() = 0;
    [[nodiscard]] virtual Space spaceCreate(Connection connection, std::int32_t one,
                                            std::int32_t zero) = 0;
    virtual void spaceSetAbsoluteLevel(Connection connection, Space space, std::int32_t level) = 0;
    virtual void showSpaces(Connection connection, std::span<const Space> spaces) = 0;
    virtual void spaceAddWindowsAndRemoveFromSpaces(Connection connection, Space space,
                                                    std::span<const std::int64_t> windows,
                                                    std::int32_t options) = 0;
    virtual void removeWindowsFromSpaces(Connection connection,
                                         std::span<const std::int64_t> windows,
                                         std::span<const Space> spaces) = 0;
};

/// The space that lock-screen windows are moved into; never destroyed while the process lives.
class SkyLightSpace final : public LockScreenSpace {
  public:
    /// Above everything that the lock screen shows.
    static constexpr std::int32_t absoluteLevel = 400;
    /// Out of all other spaces.
    static constexpr std::int32_t moveOptions = 7;

    explicit SkyLightSpace(std::shared_ptr<SkyLightFunctions> functions);

    void add(const LockScreenPanel& panel) override;
    void remove(const LockScreenPanel& panel) override;

  private:
    const std::shared_ptr<SkyLightFunctions> functions_;
    const SkyLightFunctions::Connection connection_;
    const SkyLightFunctions::Space space_;
};

}  // namespace marrowby
