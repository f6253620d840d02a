// One event of the machine's that is handled most often, and one that changes most.

#include "Benchmarks/Allocations.h"
#include "UnlockCore/Engine/UnlockMachine.h"

#include <utility>

#include <benchmark/benchmark.h>

namespace marrowby {
namespace {

using Event = UnlockMachine::Event;

UnlockSnapshot lockedWorld() {
    UnlockSnapshot world;
    world.now = Date(TimeInterval(1000));
    for (bool UnlockSnapshot::* const flag :
         {&UnlockSnapshot::isLocked, &UnlockSnapshot::isEnabled, &UnlockSnapshot::showsUI,
          &UnlockSnapshot::vaultUnlocked, &UnlockSnapshot::passwordSaved, &UnlockSnapshot::hasFace,
          &UnlockSnapshot::accessibilityTrusted, &UnlockSnapshot::spaceKeyAccess}) {
        world.*flag = true;
    }
    world.scanDuration = TimeInterval(5);
    world.triggers = {UnlockTrigger::onReturn, UnlockTrigger::onSpace};
    return world;
}

void count(benchmark::State& state, const Allocations& before) {
    state.counters["allocations"] =
        benchmark::Counter(static_cast<double>(Allocations::now().count - before.count),
                           benchmark::Counter::kAvgIterations);
}

/// A face that is still looked at.
void machineFrame(benchmark::State& state) {
    UnlockSnapshot world = lockedWorld();
    UnlockMachine machine({}, world.triggers);
    (void)machine.handle(Event::Lock{LockEvent::screenLocked}, world);
    world.now += TimeInterval(10);
    (void)machine.handle(Event::SpaceKey{}, world);
    const auto* scanning = std::get_if<UnlockMachine::Phase::Scanning>(&machine.phase());
    if (!scanning) {
        state.SkipWithError("the machine does not look");
        return;
    }
    const Event::Frame frame{scanning->scan.id,
                             ScanObservation::Face{.match = std::nullopt, .decision = {}}};
    const auto before = Allocations::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(machine.handle(frame, world));
    count(state, before);
}
BENCHMARK(machineFrame)->Unit(benchmark::kNanosecond);

void machineLock(benchmark::State& state) {
    const UnlockSnapshot world = lockedWorld();
    UnlockMachine machine({}, world.triggers);
    const auto before = Allocations::now();
    for (auto _ : state)
        benchmark::DoNotOptimize(machine.handle(Event::Lock{LockEvent::screenLocked}, world));
    count(state, before);
}
BENCHMARK(machineLock)->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace marrowby
