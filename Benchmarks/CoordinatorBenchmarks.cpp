// SPDX-License-Identifier: Apache-2.0

// One camera frame on the main thread, from the scanner's callback to the effects: ten faces of 18
// samples, at 30 frames per second, with the timers of the system.

#include "Benchmarks/Allocations.h"
#include "Benchmarks/Material.h"
#include "Platforms/Linux/Desktop/QtMainThread.h"
#include "Platforms/Posix/PosixFileSystem.h"
#include "UnlockCore/Engine/SystemUnlockClock.h"
#include "UnlockCore/Engine/UnlockCoordinator.h"

#include <utility>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

using Event = UnlockCoordinator::Event;

class SteppingClock final : public SystemClock {
  public:
    [[nodiscard]] Date now() const override { return now_; }
    void step() { now_ += TimeInterval(1.0 / 30); }

  private:
    Date now_{TimeInterval(800'000'000)};
};

/// Everything that the coordinator calls; it does nothing itself.
class Idle final : public FaceScanning,
                   public PasswordTyping,
                   public SpaceKeyListening,
                   public ActivityWatching,
                   public LockStateReading {
  public:
    ScanID scan{};
    Callbacks callbacks;
    mutable int readings = 0;

    void start(ScanID id, const ScanConfiguration& /*configuration*/, Callbacks told) override {
        scan = id;
        callbacks = std::move(told);
    }
    void start() override {}
    void stop() override {}
    void typeStoredPassword(std::function<bool()> /*stillLocked*/,
                            std::function<void(TypingOutcome)> /*completion*/) override {}
    [[nodiscard]] LockState state() const override {
        ++readings;
        return {.isScreenLocked = true, .isOnConsole = true};
    }
};

/// A known face that is not confirmed to be alive yet.
void coordinatorFrame(benchmark::State& state) {
    const auto faces =
        std::make_shared<const std::vector<FaceIdentity>>(Material::shared().identities(10));
    const PosixFileSystem files;
    QtMainThread mainThread;
    SteppingClock clock;
    SystemUnlockClock unlockClock(clock, mainThread);
    Idle idle;
    const auto readiness = [&] {
        return UnlockReadiness{.isEnabled = true,
                               .triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace},
                               .showsUI = true,
                               .scanDuration = TimeInterval(1e8),
                               .vaultUnlocked = true,
                               .passwordSaved = files.exists(Material::shared().models.folder),
                               .accessibilityTrusted = true,
                               .spaceKeyAccess = true,
                               .camera = {},
                               .scan = {.cameraID = {}, .identities = faces}};
    };
    UnlockCoordinator coordinator({}, {.lockState = idle,
                                       .scanner = idle,
                                       .typer = idle,
                                       .presenter = nullptr,
                                       .spaceKeys = idle,
                                       .activity = idle,
                                       .clock = unlockClock,
                                       .readiness = readiness});
    coordinator.send(Event::Lock{LockEvent::screenLocked});
    coordinator.send(Event::Activate{});
    if (!idle.callbacks.onFrame) {
        state.SkipWithError("no scan started");
        return;
    }
    const ScanObservation seen = ScanObservation::Face{
        .match = MatchedFace{.id = {}, .name = "Somebody", .similarity = 0.7F}, .decision = {}};
    idle.readings = 0;
    const auto before = Allocations::now();
    for (auto _ : state) {
        clock.step();
        idle.callbacks.onFrame(idle.scan, seen);
    }
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(Allocations::now().count - before.count),
                           benchmark::Counter::kAvgIterations);
    state.counters["lockReadings"] =
        benchmark::Counter(static_cast<double>(idle.readings), benchmark::Counter::kAvgIterations);
}
BENCHMARK(coordinatorFrame)->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace marrowby
