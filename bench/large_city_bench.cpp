// The large city: 2,000 by 2,000 cells of 5 m (10 km square), 144 base stations on a lattice
// and 30,000 users in the streets, made once by celvane-citygen into a folder of the
// benchmarks' own. Each stage beside its plain reference in the same run: the gain table of
// both models, one solve per strategy, and a pass that only reads the gains (the memory
// limit of a sweep). peak_MB is the process's peak resident memory after the stage.
#include <benchmark/benchmark.h>

#include <chrono>
#include <string>
#include <thread>

#include "citygen_city.h"
#include "propagation/Trl_Motorola.h"
#include "reference_solver.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"

namespace {

const int cells = 2000, stations = 144, users = 30000;

std::string large_city_folder() { return citygen_folder("celvane_bench_large_city", cells, 5, stations, users); }

CitygenCity& city() {
  static CitygenCity* c = new CitygenCity(large_city_folder());
  return *c;
}

void per_pair(benchmark::State& state, double pairs, std::chrono::steady_clock::duration spent) {
  const double seconds = std::chrono::duration<double>(spent).count() / static_cast<double>(state.iterations());
  state.counters["s_per_table"] = seconds;
  state.counters["ns_per_pair"] = seconds * 1e9 / pairs;
  state.counters["peak_MB"] = peak_megabytes();
}

// --------------------------------------------------------------------- gain tables

// The simple model's table; argument 1 lets two threads fill it.
void BM_LargeSimpleTable(benchmark::State& state) {
  CitygenCity& c = city();
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner assigner;
  Trl_Assigner::parallel_fill = state.range(0) != 0;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(c.tx, c.rx, model);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  Trl_Assigner::parallel_fill = true;
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeSimpleTable)->Arg(0)->Arg(1)->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

// The plain reference: the model's gain() per pair into a table of rows.
void BM_LargeSimpleTableReference(benchmark::State& state) {
  CitygenCity& c = city();
  Trl_Motorola model(32.2, 35.1);
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    std::vector<std::vector<double>> gain(c.tx.size(), std::vector<double>(c.rx.size()));
    int t = 0;
    for (const Trl_Tx& tx : c.tx) {
      for (const Trl_Rx& rx : c.rx) gain[t][rx.number] = model.gain(tx, rx);
      ++t;
    }
    benchmark::DoNotOptimize(gain[0].data());
  }
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeSimpleTableReference)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The Xia-Bertoni table in angular order on the given number of threads (0: the machine's).
void BM_LargeXiaBertoniTable(benchmark::State& state) {
  CitygenCity& c = city();
  if (!c.terrain->loaded()) return state.SkipWithError("no large city");
  Trl_XiaBertoni m = c.urban();
  Trl_Assigner assigner;
  const int threads = static_cast<int>(state.range(0));
  Trl_Assigner::terrain_fill_threads = threads ? threads : static_cast<int>(std::thread::hardware_concurrency());
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains_in_angular_order(c.tx, c.rx, m, *c.terrain, Trl_Assigner::status_function());
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  Trl_Assigner::terrain_fill_threads = 1;
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeXiaBertoniTable)->Arg(1)->Arg(2)->Arg(0)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// The plain reference: the same model pair by pair, users in list order.
void BM_LargeXiaBertoniTableReference(benchmark::State& state) {
  CitygenCity& c = city();
  if (!c.terrain->loaded()) return state.SkipWithError("no large city");
  Trl_XiaBertoni m = c.urban();
  Trl_Assigner assigner;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(c.tx, c.rx, m);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  per_pair(state, c.pairs(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_LargeXiaBertoniTableReference)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- solve

// The solver on the simple model's table (prepared once, not timed).
Trl_Assigner& prepared(int strategy) {
  static Trl_Assigner* assigner = nullptr;
  if (!assigner) {
    assigner = new Trl_Assigner;
    Trl_Assigner::parameters p;
    p.validate_downlink = false;
    Trl_Motorola model(32.2, 35.1);
    assigner->prepare(city().tx, city().rx, p, model);
  }
  assigner->set_strategy(strategy);
  return *assigner;
}

void sweep_counters(benchmark::State& state, double sweeps, double rows, double n) {
  state.counters["sweeps"] = sweeps;
  state.counters["ns_per_user_row_sweep"] = benchmark::Counter(
      rows * n * sweeps / 1e9, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["peak_MB"] = peak_megabytes();
}

// One solve with every station on; argument 2 is 0 for the plain loops of the solver.
void BM_LargeSolve(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(static_cast<int>(state.range(0)));
  Trl_UplinkKernels::enabled = state.range(1) != 0;
  Trl_Assignment a(assigner, 0, city().tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  bool ok = true;
  for (auto _ : state) {
    stats = Trl_RunningStats();
    ok = a.solve(false, &stats);
    benchmark::DoNotOptimize(a.rx_uplink[0]);
  }
  Trl_UplinkKernels::enabled = true;
  sweep_counters(state, ok ? stats.sum : assigner.max_iterations, assigner.tx_count, assigner.rx_count);
  if (!ok) state.SkipWithError("no solution");
}
BENCHMARK(BM_LargeSolve)
    ->Args({0, 1})->Args({0, 0})->Args({1, 1})->Args({2, 1})->Args({2, 0})->Args({3, 1})
    ->Unit(benchmark::kMillisecond);

// The obvious simultaneous iteration (the in-sequence one is quadratic in the users).
void BM_LargeSolveReference(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  ReferenceSolver reference(assigner);
  int sweeps = 0;
  for (auto _ : state) {
    sweeps = reference.solve(false);
    benchmark::DoNotOptimize(sweeps);
  }
  sweep_counters(state, sweeps, assigner.tx_count, assigner.rx_count);
  if (sweeps < 0) state.SkipWithError("no solution");
}
BENCHMARK(BM_LargeSolveReference)->Iterations(1)->Unit(benchmark::kMillisecond);

// The memory limit of a sweep: one pass that only reads every gain of the table once.
void BM_LargeGainRead(benchmark::State& state) {
  Trl_Assigner& assigner = prepared(0);
  for (auto _ : state) {
    double s[8] = {0, 0, 0, 0, 0, 0, 0, 0};  // independent sums, so that memory is the limit
    for (int t = 0; t < assigner.tx_count; ++t) {
      const double* g = assigner.path_gain.row(t);
      for (int r = 0; r + 8 <= assigner.rx_count; r += 8)
        for (int k = 0; k < 8; ++k) s[k] += g[r + k];
    }
    benchmark::DoNotOptimize(s);
  }
  sweep_counters(state, 1, assigner.tx_count, assigner.rx_count);
}
BENCHMARK(BM_LargeGainRead)->Unit(benchmark::kMillisecond);

}  // namespace
