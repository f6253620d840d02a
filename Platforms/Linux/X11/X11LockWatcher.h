#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Tells when a locker takes or leaves an X display, without polling. Made and destroyed on the
/// thread of Qt's event loop, from which it calls.
class X11LockWatcher {
  public:
    /// `onLost` is called at most once, with a sentence for the user, when the display is gone.
    /// Both may destroy the watcher. The error is a sentence as well.
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
