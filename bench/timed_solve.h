// The timed loop of the solve benchmarks: one solve of the assignment per iteration.
#pragma once

#include <benchmark/benchmark.h>

#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"

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
