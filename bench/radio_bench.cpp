// The radio core beside plain reference loops written the obvious way: filling the table of
// path gains with the simple model, and one solve of the uplink iteration with every base
// station switched on. The counters give the time per unit of work; the ratio to the
// reference tells whether the optimized loops pay.
#include <benchmark/benchmark.h>

#include <cmath>
#include <limits>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"
#include "reference_solver.h"
#include "timed_solve.h"

namespace {

// A synthetic city of 2 km by 2 km: base stations on a regular grid, users spread by a
// fixed linear congruential walk, so that every run sees the same plan. The users send
// slow data (1.2 kbit/s up), so that 10,000 of them fit on 40 stations.
const double uplink_rate = 1.2;
struct City {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  std::vector<Trl_Tx> txv;
  std::vector<Trl_Rx> rxv;
  City(int stations, int users) {
    const int side = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(stations))));
    for (int t = 0; t < stations; ++t) {
      const double x = 2000.0 * (t % side + 0.5) / side, y = 2000.0 * (t / side + 0.5) / side;
      Trl_Tx s(tk::d3_point(x, y, 30), tk::string("BS%04d", t), t, 20, 2, 1,
               std::pow(10.0, 0.9), std::pow(10.0, 0.5), 0.4, 0);
      tx.append(s);
      txv.push_back(s);
    }
    unsigned state = 12345;
    auto next = [&state]() {
      state = state * 1103515245u + 12345u;
      return (state >> 8) / double(1 << 24);
    };
    for (int r = 0; r < users; ++r) {
      Trl_Rx u(tk::d3_point(2000 * next(), 2000 * next(), 1.5), r, std::pow(10.0, 1.0),
               std::pow(10.0, 0.55), std::pow(10.0, 0.9), std::pow(10.0, -0.9),
               std::pow(10.0, -8.0), std::pow(10.0, -0.3), 0.66, 12.2, uplink_rate, 0);
      rx.append(u);
      rxv.push_back(u);
    }
  }
};

Trl_Assigner::parameters settings(int strategy) {
  Trl_Assigner::parameters p;
  p.strategy = strategy;
  p.validate_downlink = false;
  return p;
}

// --------------------------------------------------------------------- prepare

void BM_PrepareSimple(benchmark::State& state) {
  City city(40, 10000);
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner assigner;
  Trl_Assigner::parallel_fill = state.range(0) != 0;
  for (auto _ : state) {
    assigner.prepare(city.tx, city.rx, settings(0), model);
    benchmark::DoNotOptimize(assigner.path_gain.row(0));
  }
  Trl_Assigner::parallel_fill = true;
  state.counters["ns_per_pair"] = benchmark::Counter(
      40.0 * 10000 / 1e9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PrepareSimple)->Arg(1)->Arg(0)->UseRealTime()->Unit(benchmark::kMillisecond);

// The obvious way: a table of rows, the model's gain() per pair, the targets and the share
// table per pair.
void BM_PrepareReference(benchmark::State& state) {
  City city(40, 10000);
  Trl_Motorola model(32.2, 35.1);
  const double W = 5e6;
  for (auto _ : state) {
    std::vector<std::vector<double>> gain(40, std::vector<double>(10000));
    std::vector<std::vector<double>> share(40, std::vector<double>(10000));
    for (int t = 0; t < 40; ++t)
      for (int r = 0; r < 10000; ++r) {
        gain[t][city.rxv[r].number] = model.gain(city.txv[t], city.rxv[r]);
        const double g = city.rxv[r].required_down(1 / W);
        share[t][r] = g / (city.txv[t].orthogonality * g + 1);
      }
    benchmark::DoNotOptimize(gain[0].data());
    benchmark::DoNotOptimize(share[0].data());
  }
  state.counters["ns_per_pair"] = benchmark::Counter(
      40.0 * 10000 / 1e9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
BENCHMARK(BM_PrepareReference)->Unit(benchmark::kMillisecond);

// --------------------------------------------------------------------- solve

// Sweeps of the last solve, from the running statistics.
double sweeps_of(const Trl_RunningStats& stats) { return stats.count > 0 ? stats.sum / stats.count : 0; }

// Argument 3 is 0 for the plain loops of the solver (the wide ones switched off), 1 for the
// wide ones on one thread, 2 for them on as many as they take.
void BM_Solve(benchmark::State& state) {
  const int strategy = static_cast<int>(state.range(0));
  const int users = static_cast<int>(state.range(1));
  const Wide_loops loops(state.range(2));
  City city(40, users);
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner assigner;
  assigner.prepare(city.tx, city.rx, settings(strategy), model);
  Trl_Assignment a(assigner, 0, city.tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  const bool ok = solve_each_iteration(state, a, stats);
  const double sweeps = ok ? sweeps_of(stats) : assigner.max_iterations;
  state.counters["sweeps"] = sweeps;
  state.counters["ns_per_user_row_sweep"] = benchmark::Counter(
      40.0 * users * sweeps / 1e9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  if (!ok) state.SkipWithError("no solution");
}
BENCHMARK(BM_Solve)
    ->Args({0, 10000, 2})->Args({0, 10000, 1})->Args({0, 10000, 0})->Args({2, 10000, 2})->Args({2, 10000, 0})
    ->Args({0, 500, 2})->Args({2, 500, 2})->UseRealTime()->Unit(benchmark::kMillisecond);

void BM_SolveReference(benchmark::State& state) {
  const int strategy = static_cast<int>(state.range(0));
  const int users = static_cast<int>(state.range(1));
  City city(40, users);
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner assigner;
  assigner.prepare(city.tx, city.rx, settings(strategy), model);
  ReferenceSolver reference(assigner);
  int sweeps = 0;
  for (auto _ : state) {
    sweeps = reference.solve(strategy == 2);
    benchmark::DoNotOptimize(sweeps);
  }
  state.counters["sweeps"] = sweeps;
  state.counters["ns_per_user_row_sweep"] = benchmark::Counter(
      40.0 * users * sweeps / 1e9,
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  if (sweeps < 0) state.SkipWithError("no solution");
}
// The obvious in-sequence sweep sums the interference for every user and row, which is
// quadratic in the users: it is measured on 500.
BENCHMARK(BM_SolveReference)->Args({0, 10000})->Args({0, 500})->Args({2, 500})->Unit(benchmark::kMillisecond);

}  // namespace
