// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/SpaceKeys.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Space keys of an X display through XInput 2.1 raw keys, which bypass grabs; includes key
/// repeats. XTEST keys count as synthetic. On the thread of Qt's event loop; silent after the
/// display is lost.
class X11SpaceKeys final : public SpaceKeys {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11SpaceKeys>, std::string> create(
        const std::string& displayName);
    ~X11SpaceKeys() override;

    [[nodiscard]] bool hasListenAccess() const override;
    [[nodiscard]] std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) override;

  private:
    struct Display;
    class RawKeys;
    explicit X11SpaceKeys(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
