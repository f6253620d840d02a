// SPDX-License-Identifier: Apache-2.0

// The machine's most frequent event, and the one with most effects.

#include "Benchmarks/Allocations.h"
#include "UnlockCore/Engine/UnlockMachine.h"

#include <utility>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

using Event = UnlockMachine::Event;

UnlockSnapshot lockedSnapshot() {
    UnlockSnapshot snapshot;
    snapshot.now = Date(TimeInterval(1000));
    for (bool UnlockSnapshot::* const flag :
         {&UnlockSnapshot::isLocked, &UnlockSnapshot::isEnabled, &UnlockSnapshot::showsUI,
          &UnlockSnapshot::vaultUnlocked, &UnlockSnapshot::passwordSaved, &UnlockSnapshot::hasFace,
          &UnlockSnapshot::accessibilityTrusted, &UnlockSnapshot::spaceKeyAccess}) {
        snapshot.*flag = true;
    }
    snapshot.scanDuration = TimeInterval(5);
    snapshot.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
    return snapshot;
}

void count(benchmark::State& state, const Allocations& before) {
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(Allocations::now().count - before.count),
                           benchmark::Counter::kAvgIterations);
}

/// A frame during a scan.
void machineFrame(benchmark::State& state) {
    UnlockSnapshot snapshot = lockedSnapshot();
    UnlockMachine machine({}, snapshot.triggers);
    (void)machine.handle(Event::Lock{LockEvent::screenLocked}, snapshot);
    snapshot.now += TimeInterval(10);
    (void)machine.handle(Event::SpaceKey{}, snapshot);
    const auto* scanning = std::get_if<UnlockMachine::Phase::Scanning>(&machine.phase());
    if (!scanning) {
        state.SkipWithError("the machine does not look");
        return;
    }
    const Event::Frame frame{scanning->scan.id,
                             ScanObservation::Face{.match = std::nullopt, .decision = {}}};
    const auto before = Allocations::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(machine.handle(frame, snapshot));
    count(state, before);
}
BENCHMARK(machineFrame)->Unit(benchmark::kNanosecond);

void machineLock(benchmark::State& state) {
    const UnlockSnapshot snapshot = lockedSnapshot();
    UnlockMachine machine({}, snapshot.triggers);
    const auto before = Allocations::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(machine.handle(Event::Lock{LockEvent::screenLocked}, snapshot));
    count(state, before);
}
BENCHMARK(machineLock)->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace marrowby
