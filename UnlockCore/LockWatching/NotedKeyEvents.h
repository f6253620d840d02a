#pragma once

#include "UnlockCore/LockWatching/OwnKeystrokes.h"
#include "UnlockCore/Platform/KeyEvents.h"

#include <memory>
#include <span>

namespace marrowby {

/// A keyboard whose keys are noted as this process's own. Both outlive it and its sources.
class NotedKeyEvents final : public KeyEvents {
  public:
    NotedKeyEvents(KeyEvents& keyEvents, OwnKeystrokes& own) : keyEvents_(keyEvents), own_(own) {}

    [[nodiscard]] bool isTrusted() const override { return keyEvents_.isTrusted(); }
    [[nodiscard]] bool mayPost() const override { return keyEvents_.mayPost(); }
    [[nodiscard]] KeyDialect dialect() const override { return keyEvents_.dialect(); }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> text, std::span<const std::uint32_t> codes) override;
    void pause(TimeInterval duration) override { keyEvents_.pause(duration); }

  private:
    KeyEvents& keyEvents_;
    OwnKeystrokes& own_;
};

}  // namespace marrowby
