// SPDX-License-Identifier: Apache-2.0

// From the decision to Return: our own time, and the plan's pauses.

#include "Platforms/macOS/Rules/KeyCodes.h"
#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <string>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

/// Takes every key at once and counts pauses instead of waiting.
class QuickKeyboard final : public KeyEvents {
  public:
    QuickKeyboard(FieldClearing clearing, const KeyPace& pace) : clearing_(clearing), pace_(pace) {}

    [[nodiscard]] bool isTrusted() const override { return true; }
    [[nodiscard]] FieldClearing clearing() const override { return clearing_; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> /*text*/, std::span<const EditingKey> /*keys*/) override {
        return std::make_unique<Source>(pace_);
    }
    void pause(TimeInterval duration) override { paused += duration; }

    TimeInterval paused{};

  private:
    class Source final : public KeyEventSource {
      public:
        explicit Source(const KeyPace& pace) : pace_(pace) {}
        [[nodiscard]] KeyPace pace() const override { return pace_; }
        [[nodiscard]] bool post(const KeyPress& press) override {
            benchmark::DoNotOptimize(press.key);
            return true;
        }
        [[nodiscard]] bool postText(std::span<const char16_t> units, bool /*down*/) override {
            benchmark::DoNotOptimize(units.data());
            return true;
        }
        [[nodiscard]] bool isUndisturbed() override { return true; }
        void settle(const std::function<bool()>& /*stillLocked*/) override {}

      private:
        const KeyPace pace_;
    };

    const FieldClearing clearing_;
    const KeyPace pace_;
};

void typePassword(benchmark::State& state, FieldClearing clearing, const KeyPace& pace) {
    const std::string password(static_cast<std::size_t>(state.range(0)), 'x');
    TimeInterval paused{};
    for (auto _ : state) {
        QuickKeyboard keyboard(clearing, pace);
        const auto typing = keystrokeinjector::typePassword(
            keyboard, {reinterpret_cast<const std::uint8_t*>(password.data()), password.size()},
            [] { return true; });
        if (!typing.outcome()) state.SkipWithError("The typing failed.");
        paused = keyboard.paused;
    }
    state.counters["pauses_ms"] = paused.count() * 1000;
}

BENCHMARK_CAPTURE(typePassword, Mac, FieldClearing::toTheEndThenBack, loginWindowPace)
    ->Arg(20)
    ->Arg(45);
BENCHMARK_CAPTURE(
    typePassword, X11, FieldClearing::controlU,
    KeyPace{.tapsFirst = false, .wake = {}, .shortcut = {}, .afterText = {}, .afterReturn = {}})
    ->Arg(20)
    ->Arg(45);

}  // namespace
}  // namespace marrowby
