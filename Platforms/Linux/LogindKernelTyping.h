#pragma once

#include "Platforms/Linux/KernelTypingRule.h"

#include <memory>
#include <string>

namespace marrowby {

/// Asks logind, anew each time, whether keys typed through the kernel are for the lock screen of
/// this process's session: the one that logind itself knows it by. Nobody who doesn't answer within
/// a second has locked anything. Any thread; blocks.
class LogindKernelTyping {
  public:
    /// `display` is this process's; empty where there is none.
    LogindKernelTyping(std::string systemBus, std::string display);
    ~LogindKernelTyping();
    LogindKernelTyping(const LogindKernelTyping&) = delete;
    LogindKernelTyping& operator=(const LogindKernelTyping&) = delete;

    [[nodiscard]] bool mayType() const;

  private:
    class Bus;

    const std::string display_;
    const std::unique_ptr<Bus> bus_;
};

}  // namespace marrowby
