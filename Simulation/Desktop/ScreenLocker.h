// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace marrowby {

/// A real screen locker on a private desktop with a password of its own: PAM asks a checker in a
/// private folder instead of the system's accounts. All of it is removed when this is destroyed or
/// the process dies. Main thread, but for isRunning().
class ScreenLocker {
  public:
    /// xscreensaver and mate-screensaver lock for ordinary users only: run as one where we are
    /// root. i3lock forks into the background, so that the process that connected to the display
    /// ends; session managers keep it in the foreground.
    enum class Kind { i3lock, i3lockInBackground, xsecurelock, xscreensaver, mateScreensaver };

    explicit ScreenLocker(std::string displayName, Kind kind = Kind::i3lock);
    ScreenLocker(const ScreenLocker&) = delete;
    ScreenLocker& operator=(const ScreenLocker&) = delete;
    ~ScreenLocker();

    /// Blocks until the locker covers the screen and holds the keyboard, at most ten seconds. The
    /// password is made up (UTF-8, no NUL) and lies in a file meanwhile. The error is a sentence
    /// for the user.
    [[nodiscard]] std::expected<void, std::string> lock(std::string_view password);

    /// Whether the screen is locked. Any thread; needs no main loop.
    [[nodiscard]] bool isRunning() const;

    /// How many wrong passwords it was given since it locked.
    [[nodiscard]] std::size_t refusals() const;

    /// Called from the main loop (Qt's) when a locker ends by itself: unlocked, or crashed.
    void onEnded(std::function<void()> callback);

    /// Ends the locker without a password and without a callback.
    void kill();

    /// Sends a signal to the process that holds the screen; false where there is none.
    [[nodiscard]] bool send(int signal) const;

  private:
    struct State;
    [[nodiscard]] std::expected<void, std::string> tryToLock(std::string_view password);
    std::unique_ptr<State> state_;
};

}  // namespace marrowby
