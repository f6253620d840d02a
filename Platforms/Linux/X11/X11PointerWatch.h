// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/WindowServer.h"

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Queries the pointer's position after XInput raw motion, which bypasses grabs. On the thread of
/// Qt's event loop; silent after the display is lost.
class X11PointerWatch final : public WindowServer::PointerWatch {
  public:
    /// Null when the display has no raw motion.
    [[nodiscard]] static std::unique_ptr<X11PointerWatch> create(
        const std::string& displayName, std::function<void(const Point&)> onPlace);
    ~X11PointerWatch() override;

  private:
    struct Watch;
    explicit X11PointerWatch(std::unique_ptr<Watch> watch);

    std::unique_ptr<Watch> watch_;
};

}  // namespace marrowby
