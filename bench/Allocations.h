#pragma once

#include <benchmark/benchmark.h>
#include <cstdint>

namespace kqu::bench {

/// How often this program has asked for memory by `operator new`; what the system libraries
/// allocate by themselves is not among it.
[[nodiscard]] std::uint64_t Allocations();

/// Reports how many allocations each pass of a benchmark's loop took. Made before the loop, it
/// counts until it goes.
class AllocationCount {
  public:
    explicit AllocationCount(benchmark::State& state) : state_(state) {}
    ~AllocationCount() {
        state_.counters["allocations"] = benchmark::Counter(
            static_cast<double>(Allocations() - before_), benchmark::Counter::kAvgIterations);
    }
    AllocationCount(const AllocationCount&) = delete;
    AllocationCount& operator=(const AllocationCount&) = delete;

  private:
    benchmark::State& state_;
    std::uint64_t before_ = Allocations();
};

} // namespace kqu::bench
