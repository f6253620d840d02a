// SPDX-License-Identifier: Apache-2.0
#include "Tests/Hostile/Ground/GuardedTyping.h"

#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <span>
#include <utility>

#include <unistd.h>

namespace marrowby {

GuardedTyping::GuardedTyping(KeyEvents& keyEvents, std::string password,
                             std::function<bool()> isLocked)
    : isLocked_(std::move(isLocked)),
      end_(Pipe::create().value()),
      thread_([this, &keyEvents, password = std::move(password)] { type(keyEvents, password); }) {}

GuardedTyping::~GuardedTyping() {
    if (thread_.joinable()) thread_.join();
}

GuardedTyping::Outcome GuardedTyping::outcome() {
    if (thread_.joinable()) thread_.join();
    return outcome_;
}

void GuardedTyping::type(KeyEvents& keyEvents, const std::string& password) {
    const std::span bytes(reinterpret_cast<const std::uint8_t*>(password.data()), password.size());
    const auto typing = keystrokeinjector::typePassword(
        keyEvents, bytes, [this] { return !hasEnded_ || (isLocked_ && isLocked_()); });
    outcome_ = typing.outcome();
    hasEnded_ = true;
    [[maybe_unused]] const auto written = ::write(end_.writing.get(), "", 1);
}

}  // namespace marrowby
