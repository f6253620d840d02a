// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Platform/KeyEvents.h"
#include "UnlockCore/Platform/PlatformWords.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace marrowby {

/// Why the password was not typed, or not to its end.
enum class KeystrokeError { noAccessibility, notLocked, invalidText, eventFailed, noLocker };

[[nodiscard]] std::string description(KeystrokeError error, const PlatformWords& words);

/// The outcome of one typing, and the borrowed keys that a slow lock screen may need for seconds:
/// report the outcome, then destroy this, which may block. Holds no text.
class KeystrokeTyping {
  public:
    KeystrokeTyping(std::expected<void, KeystrokeError> outcome,
                    std::unique_ptr<KeyEventSource> source, std::function<bool()> stillLocked)
        : outcome_(outcome), source_(std::move(source)), stillLocked_(std::move(stillLocked)) {}
    KeystrokeTyping(KeystrokeTyping&&) noexcept = default;
    KeystrokeTyping& operator=(KeystrokeTyping&&) = delete;
    KeystrokeTyping(const KeystrokeTyping&) = delete;
    KeystrokeTyping& operator=(const KeystrokeTyping&) = delete;
    ~KeystrokeTyping() {
        if (source_) source_->settle(stillLocked_);
    }

    [[nodiscard]] const std::expected<void, KeystrokeError>& outcome() const { return outcome_; }

  private:
    std::expected<void, KeystrokeError> outcome_;
    std::unique_ptr<KeyEventSource> source_;
    std::function<bool()> stillLocked_;
};

namespace keystrokeinjector {

/// Clears the lock screen's field, types `password` (UTF-8) and presses Return, asking
/// `stillLocked` before every burst of keys. Blocks the calling thread for the plan's pauses; never
/// call it on the main thread. `onFirstKey` is called before the first key.
[[nodiscard]] KeystrokeTyping typePassword(KeyEvents& keyEvents,
                                           std::span<const std::uint8_t> password,
                                           std::function<bool()> stillLocked,
                                           const std::function<void()>& onFirstKey = {});

}  // namespace keystrokeinjector

}  // namespace marrowby
