// From the decision to Return: our own time, and the plan's pauses.

#include "UnlockCore/PasswordEntry/KeystrokeInjector.h"

#include <string>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

/// Takes every key at once and counts pauses instead of waiting.
class QuickKeyboard final : public KeyEvents {
  public:
    explicit QuickKeyboard(KeyDialect dialect) : dialect_(dialect) {}

    [[nodiscard]] bool isTrusted() const override { return true; }
    [[nodiscard]] KeyDialect dialect() const override { return dialect_; }
    [[nodiscard]] std::unique_ptr<KeyEventSource> makeSource(
        std::span<const char16_t> /*text*/, std::span<const std::uint32_t> /*codes*/) override {
        return std::make_unique<Source>();
    }
    void pause(TimeInterval duration) override { paused += duration; }

    TimeInterval paused{};

  private:
    class Source final : public KeyEventSource {
      public:
        [[nodiscard]] bool post(const KeyPress& press) override {
            benchmark::DoNotOptimize(press.code);
            return true;
        }
        [[nodiscard]] bool postText(std::span<const char16_t> units, bool /*down*/) override {
            benchmark::DoNotOptimize(units.data());
            return true;
        }
        [[nodiscard]] bool isUndisturbed() override { return true; }
        void settle(const std::function<bool()>& /*stillLocked*/) override {}
    };

    const KeyDialect dialect_;
};

void typePassword(benchmark::State& state, KeyDialect dialect) {
    const std::string password(static_cast<std::size_t>(state.range(0)), 'x');
    TimeInterval paused{};
    for (auto _ : state) {
        QuickKeyboard keyboard(dialect);
        const auto typing = keystrokeinjector::typePassword(
            keyboard, {reinterpret_cast<const std::uint8_t*>(password.data()), password.size()},
            [] { return true; });
        if (!typing.outcome()) state.SkipWithError("The typing failed.");
        paused = keyboard.paused;
    }
    state.counters["pauses_ms"] = paused.count() * 1000;
}

BENCHMARK_CAPTURE(typePassword, Mac, KeyDialect::macLoginWindow)->Arg(20)->Arg(45);
BENCHMARK_CAPTURE(typePassword, X11, KeyDialect::x11Locker)->Arg(20)->Arg(45);

}  // namespace
}  // namespace marrowby
