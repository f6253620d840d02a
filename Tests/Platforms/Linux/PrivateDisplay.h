#pragma once

#include "Platforms/Linux/XcbConnection.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace marrowby {

/// An X server without a screen, for one test, and somebody sitting in front of it.
class PrivateDisplay {
  public:
    /// A child process, killed with its owner.
    class Program {
      public:
        explicit Program(pid_t child = 0) : child_(child) {}
        Program(Program&& other) noexcept : child_(std::exchange(other.child_, 0)) {}
        Program& operator=(Program&& other) noexcept {
            kill();
            child_ = std::exchange(other.child_, 0);
            return *this;
        }
        ~Program() { kill(); }

        explicit operator bool() const { return child_ != 0; }
        void kill();

      private:
        pid_t child_;
    };

    /// Nothing where Xvfb is missing or does not start.
    [[nodiscard]] static std::unique_ptr<PrivateDisplay> start();

    [[nodiscard]] const std::string& name() const { return name_; }
    [[nodiscard]] const XcbConnection& connection() const { return *connection_; }

    /// Runs a program on the display; absent where it cannot be started. Destroying it kills it.
    [[nodiscard]] Program run(const char* program, const char* argument) const;
    /// Ends the server at once, as a crash would.
    void kill() { server_.kill(); }
    /// Another server under the same name. False where it does not come up.
    [[nodiscard]] bool startAgain();

    /// Presses and releases the first key that has this symbol.
    void tap(std::uint32_t keysym) const;
    void movePointer() const;
    /// Gives a key code another symbol.
    void mapKey(std::uint8_t keycode, std::uint32_t keysym) const;
    void setRootProperty(const char* name, std::uint32_t value) const;

  private:
    /// The server, and the number that it chose or was given.
    [[nodiscard]] static std::pair<Program, std::optional<std::string>> startServer(
        const std::vector<const char*>& name);
    PrivateDisplay(Program server, std::string name, std::unique_ptr<XcbConnection> connection);

    Program server_;
    std::string name_;
    std::unique_ptr<XcbConnection> connection_;
};

inline constexpr const char* noPrivateDisplay = "Skipped: needs Xvfb.";

/// A window as a locker would put up. Unmapped at first; destroyed with its owner.
class LockerWindow {
  public:
    enum class Management { overridden, byWindowManager };

    LockerWindow(const PrivateDisplay& display, std::string_view className,
                 Management management = Management::overridden);
    LockerWindow(const LockerWindow&) = delete;
    LockerWindow& operator=(const LockerWindow&) = delete;
    ~LockerWindow();

    void map() const;
    void unmap() const;
    void resize(std::uint32_t width, std::uint32_t height) const;

  private:
    const XcbConnection& connection_;
    xcb_window_t window_;
};

}  // namespace marrowby
