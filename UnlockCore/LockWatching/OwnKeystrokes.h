// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "UnlockCore/Foundation/Mutex.h"
#include "UnlockCore/Foundation/Time.h"
#include "UnlockCore/Platform/InputIdle.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>

namespace marrowby {

/// When this process posted keys last, so that its own typing is not taken for the user's. Any
/// thread. Times are system uptimes; their source outlives it.
class OwnKeystrokes {
  public:
    /// Keys posted in close succession; endless while posting.
    struct Burst {
        TimeInterval begin{};
        TimeInterval end{std::numeric_limits<double>::infinity()};
    };

    /// Keys are being posted while it exists. One at a time.
    class Posting {
      public:
        explicit Posting(OwnKeystrokes& own) : own_(own) { own_.begin(); }
        ~Posting() { own_.end(); }
        Posting(const Posting&) = delete;
        Posting& operator=(const Posting&) = delete;

      private:
        OwnKeystrokes& own_;
    };

    explicit OwnKeystrokes(const InputIdle& uptimes) : uptimes_(uptimes) {}

    /// The burst that input of this moment belongs to.
    [[nodiscard]] std::optional<Burst> burst(TimeInterval inputUptime) const;
    /// Whether a synthetic key that arrives now can be one of ours.
    [[nodiscard]] bool mayArriveNow() const;

  private:
    void begin();
    void end();

    const InputIdle& uptimes_;
    mutable Mutex mutex_;
    std::optional<Burst> last_ GUARDED_BY(mutex_);
};

/// The idle time without this process's own keystrokes. Main thread. Both outlive it.
class ForeignInputIdle final : public InputIdle {
  public:
    ForeignInputIdle(const InputIdle& idle, const OwnKeystrokes& own) : idle_(idle), own_(own) {}

    [[nodiscard]] std::optional<TimeInterval> sinceLastInput() const override;
    [[nodiscard]] TimeInterval systemUptime() const override { return idle_.systemUptime(); }

  private:
    const InputIdle& idle_;
    const OwnKeystrokes& own_;
    mutable std::optional<TimeInterval> lastForeignInput_;
};

/// Key events that are recorded as this process's own. Both outlive it and its sources.
class TrackedKeyEvents final : public KeyEvents {
  public:
    TrackedKeyEvents(KeyEvents& keyEvents, OwnKeystrokes& own) : keyEvents_(keyEvents), own_(own) {}

    [[nodiscard]] bool isTrusted() const override { return keyEvents_.isTrusted(); }
    [[nodiscard]] bool mayPost() const override { return keyEvents_.mayPost(); }
    [[nodiscard]] FieldClearing clearing() const override { return keyEvents_.clearing(); }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const EditingKey> keys) override;
    void wakeField(const std::function<bool()>& stillLocked) override {
        const OwnKeystrokes::Posting posting(own_);
        keyEvents_.wakeField(stillLocked);
    }
    void pause(TimeInterval duration) override { keyEvents_.pause(duration); }

  private:
    KeyEvents& keyEvents_;
    OwnKeystrokes& own_;
};

}  // namespace marrowby
