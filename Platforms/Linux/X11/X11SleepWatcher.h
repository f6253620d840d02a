#pragma once

#include <functional>
#include <memory>
#include <string>

namespace marrowby {

/// Tells when the server blanks its monitors and shows them again, through MIT-SCREEN-SAVER, by
/// which X.Org's server announces power saving (DPMS), too. Made and destroyed on the thread of
/// Qt's event loop, from which it calls; a lost display falls silent.
class X11SleepWatcher {
  public:
    /// Null where the display doesn't tell. `onChange` may destroy the watcher.
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
