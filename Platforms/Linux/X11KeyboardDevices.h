#pragma once

#include "UnlockCore/Platform/KeyboardDevices.h"

#include <expected>
#include <memory>
#include <string>

namespace marrowby {

/// The keyboards of an X display through XInput 2.1 raw keys, which no grab holds back. Reports the
/// Space key only, key repeats included; keys sent through XTEST are synthetic. On the thread of
/// Qt's event loop; a lost display falls silent.
class X11KeyboardDevices final : public KeyboardDevices {
  public:
    /// The error is a sentence for the user.
    [[nodiscard]] static std::expected<std::unique_ptr<X11KeyboardDevices>, std::string> create(
        const std::string& displayName);
    ~X11KeyboardDevices() override;

    [[nodiscard]] bool hasListenAccess() const override;
    /// Only keyboards, usage page 1 usage 6, can be opened.
    [[nodiscard]] std::unique_ptr<Listening> open(
        Match match, std::function<void(const InputValue&)> onValue) override;

  private:
    struct Display;
    class RawKeys;
    explicit X11KeyboardDevices(std::unique_ptr<const Display> display);

    std::unique_ptr<const Display> display_;
};

}  // namespace marrowby
