// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Reports when a locker appears on or leaves an X display, by events. Create and destroy it on the
/// thread of Qt's event loop, which also runs the callbacks.
class X11LockWatcher {
  public:
    /// `onLost` is called at most once, with a sentence for the user. Both callbacks may destroy
    /// the watcher. The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11LockWatcher>, std::string> create(
        const std::string& displayName, std::function<void()> onChange,
        std::function<void(std::string)> onLost);
    ~X11LockWatcher();

  private:
    class Watch;
    explicit X11LockWatcher(std::unique_ptr<Watch> watch);

    std::unique_ptr<Watch> watch_;
};

}  // namespace marrowby
