// The timed loop of the solve benchmarks: one solve of the assignment per iteration.
#pragma once

#include <benchmark/benchmark.h>

#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"

// Chooses the solver's loops for one benchmark and restores them after: 0 the plain ones,
// 1 the wide ones on one thread, 2 the wide ones on as many threads as they take.
struct Wide_loops {
  const int saved_threads = Trl_UplinkKernels::threads;
  explicit Wide_loops(long choice) {
    Trl_UplinkKernels::enabled = choice != 0;
    if (choice == 1) Trl_UplinkKernels::threads = 1;
  }
  ~Wide_loops() {
    Trl_UplinkKernels::enabled = true;
    Trl_UplinkKernels::threads = saved_threads;
  }
};

// Returns whether the last solve served everybody; `stats` holds its sweeps.
inline bool solve_each_iteration(benchmark::State& state, Trl_Assignment& a, Trl_RunningStats& stats) {
  bool ok = true;
  for (auto _ : state) {
    stats = Trl_RunningStats();
    ok = a.solve(false, &stats);
    benchmark::DoNotOptimize(a.rx_uplink[0]);
  }
  return ok;
}
