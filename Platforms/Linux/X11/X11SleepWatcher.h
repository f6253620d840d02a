// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Reports when the server blanks and unblanks its monitors, through MIT-SCREEN-SAVER, by which
/// X.Org's server also announces DPMS. Create and destroy it on the thread of Qt's event loop,
/// which also runs the callback; silent after the display is lost.
class X11SleepWatcher {
  public:
    /// Null when the display has no such events. `onChange` may destroy the watcher.
    [[nodiscard]] static std::unique_ptr<X11SleepWatcher> create(const std::string& displayName,
                                                                 std::function<void()> onChange);
    ~X11SleepWatcher();

    [[nodiscard]] bool isAsleep() const;

  private:
    struct Watch;
    explicit X11SleepWatcher(std::unique_ptr<Watch> watch);

    std::unique_ptr<Watch> watch_;
};

}  // namespace marrowby
