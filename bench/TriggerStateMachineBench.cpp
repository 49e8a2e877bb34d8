// Cost of one trigger state machine step, and proof that it never allocates.
#include "models/PushToTalkTriggerStateMachine.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<long> allocations{0};
}

// Count every heap allocation made while the benchmark runs.
void *operator new(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void *p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void *p) noexcept
{
    std::free(p);
}
void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}

namespace {

using Input = PushToTalkTriggerInput;

// A plain Space typed while nothing is in progress: the path every Space takes.
void BM_plainSpacePassThrough(benchmark::State &state)
{
    PushToTalkTriggerStateMachine machine;
    const long before = allocations.load();
    for (auto _ : state) {
        auto actions = machine.handle(Input::spaceDown(false));
        benchmark::DoNotOptimize(actions);
        actions = machine.handle(Input::spaceUp());
        benchmark::DoNotOptimize(actions);
    }
    state.counters["allocations"] = static_cast<double>(allocations.load() - before);
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_plainSpacePassThrough);

// A whole hold gesture: trigger down, hold delay, trigger up.
void BM_holdGesture(benchmark::State &state)
{
    PushToTalkTriggerStateMachine machine;
    const long before = allocations.load();
    for (auto _ : state) {
        benchmark::DoNotOptimize(machine.handle(Input::fnDown()));
        benchmark::DoNotOptimize(machine.handle(Input::holdDelayElapsed()));
        benchmark::DoNotOptimize(machine.handle(Input::fnUp()));
    }
    state.counters["allocations"] = static_cast<double>(allocations.load() - before);
    state.SetItemsProcessed(state.iterations() * 3);
}
BENCHMARK(BM_holdGesture);

} // namespace

BENCHMARK_MAIN();
