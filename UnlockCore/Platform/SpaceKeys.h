// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>

namespace marrowby {

/// The Space keys of all keyboards, below any application and any grab. Main thread; the callback
/// comes on the main thread too.
class SpaceKeys {
  public:
    struct Press {
        /// Sent by a program; systems that cannot tell say no.
        bool isSynthetic = false;
    };
    /// Destroying it ends listening; no callback comes after that.
    class Listening {
      public:
        virtual ~Listening() = default;
    };

    virtual ~SpaceKeys() = default;
    /// Whether the user lets this process watch keys, as far as known without prompting them.
    [[nodiscard]] virtual bool hasListenAccess() const = 0;
    /// Has the system prompt the user, where it does so; hasListenAccess() shows the answer.
    /// Returns at once.
    virtual void requestListenAccess() {}
    /// A held key may repeat. Null when no keyboard can be opened.
    [[nodiscard]] virtual std::unique_ptr<Listening> listen(std::function<void(Press)> onPress) = 0;
};

}  // namespace marrowby
