// Time against size: the gain table of the simple model and of the Xia-Bertoni model (one
// thread each) and one solve (strategy 0, every station on, wide loops) on grid-layout cities
// of 10 km square made by celvane-citygen. One measure moves at a time from the large city
// (144 stations, 30,000 users, 2,000 by 2,000 cells of 5 m): the stations (72, 36), the users
// (10,000, 5,000) and the raster (1,000 cells of 10 m, 500 of 20 m: the same streets, drawn
// coarser). Users and stations are placed as on the large city, users sending 1.2 kbit/s up.
// One city is held at a time and its three stages run one after the other; times are CPU
// time of the benchmark thread. near_share is the share of pairs within the Xia-Bertoni
// model's 1,500 m, the only ones that may read the raster.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "citygen_city.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "timed_solve.h"

namespace {

struct Size {
  int stations, users, cells;
};

const Size sizes[] = {{144, 30000, 2000}, {72, 30000, 2000}, {36, 30000, 2000}, {144, 10000, 2000},
                      {144, 5000, 2000},  {144, 30000, 1000}, {144, 30000, 500}};

Size size_of(const benchmark::State& state) {
  return {static_cast<int>(state.range(0)), static_cast<int>(state.range(1)), static_cast<int>(state.range(2))};
}

// The city of a size, the large city's own folder for the large city.
CitygenCity& city_of(const Size& s) {
  static std::unique_ptr<CitygenCity> held;
  static Size held_size{0, 0, 0};
  if (!held || held_size.stations != s.stations || held_size.users != s.users || held_size.cells != s.cells) {
    held.reset();
    const bool large = s.stations == 144 && s.users == 30000 && s.cells == 2000;
    const std::string name = large ? "celvane_bench_large_city"
                                   : "celvane_bench_city_" + std::to_string(s.cells) + "_" +
                                         std::to_string(s.stations) + "_" + std::to_string(s.users);
    held = std::make_unique<CitygenCity>(citygen_folder(name, s.cells, 10000.0 / s.cells, s.stations, s.users));
    held_size = s;
  }
  return *held;
}

Trl_Assigner& scaling_assigner() {
  static Trl_Assigner* assigner = new Trl_Assigner;
  return *assigner;
}

void table_counters(benchmark::State& state, const CitygenCity& c, double seconds) {
  state.counters["s_per_table"] = seconds;
  state.counters["ns_per_pair"] = seconds * 1e9 / c.pairs();
  state.counters["pairs_M"] = c.pairs() / 1e6;
}

void BM_ScaleSimpleTable(benchmark::State& state) {
  CitygenCity& c = city_of(size_of(state));
  Trl_Assigner& assigner = scaling_assigner();
  Trl_Motorola model(32.2, 35.1);
  Trl_Assigner::parallel_fill = false;
  // Once untimed, so that no row pays for the first touch of the table's pages.
  assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
  assigner.fill_path_gains(c.tx, c.rx, model);
  const double start = thread_seconds();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(c.tx, c.rx, model);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  Trl_Assigner::parallel_fill = true;
  table_counters(state, c, (thread_seconds() - start) / static_cast<double>(state.iterations()));
}

void BM_ScaleXiaBertoniTable(benchmark::State& state) {
  CitygenCity& c = city_of(size_of(state));
  if (!c.terrain->loaded()) return state.SkipWithError("no city");
  Trl_XiaBertoni model = c.urban();
  Trl_Assigner& assigner = scaling_assigner();
  Trl_Assigner::terrain_fill_threads = 1;
  const double start = thread_seconds();
  for (auto _ : state) {
    assigner.make_tables(c.tx, c.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains_in_angular_order(c.tx, c.rx, model, *c.terrain, Trl_Assigner::status_function());
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  table_counters(state, c, (thread_seconds() - start) / static_cast<double>(state.iterations()));
  long near = 0;
  for (const Trl_Tx& tx : c.tx)
    for (const Trl_Rx& rx : c.rx)
      if (tx.position.to_point().distance(rx.position.to_point()) <= 1500) ++near;
  state.counters["near_share"] = near / c.pairs();
}

// One solve on the simple model's table (prepared before, not timed).
void BM_ScaleSolve(benchmark::State& state) {
  CitygenCity& c = city_of(size_of(state));
  Trl_Assigner& assigner = scaling_assigner();
  Trl_Assigner::parameters p;
  p.validate_downlink = false;
  Trl_Motorola model(32.2, 35.1);
  assigner.prepare(c.tx, c.rx, p, model);
  assigner.set_strategy(0);
  Trl_Assignment a(assigner, 0, c.tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  const double start = thread_seconds();
  const bool ok = solve_each_iteration(state, a, stats);
  const double seconds = (thread_seconds() - start) / static_cast<double>(state.iterations());
  state.counters["ms_per_solve"] = seconds * 1e3;
  state.counters["sweeps"] = ok ? stats.sum : 0;
  state.counters["ns_per_user_row_sweep"] = ok ? seconds * 1e9 / (c.pairs() * stats.sum) : 0;
  if (!ok) state.SkipWithError("no solution");
}

// Registered size by size, so that each city is made and read once.
const bool registered = [] {
  for (const Size& s : sizes) {
    benchmark::RegisterBenchmark("BM_ScaleSimpleTable", BM_ScaleSimpleTable)
        ->Args({s.stations, s.users, s.cells})->ArgNames({"stations", "users", "cells"})
        ->Iterations(5)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_ScaleXiaBertoniTable", BM_ScaleXiaBertoniTable)
        ->Args({s.stations, s.users, s.cells})->ArgNames({"stations", "users", "cells"})
        ->Iterations(2)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("BM_ScaleSolve", BM_ScaleSolve)
        ->Args({s.stations, s.users, s.cells})->ArgNames({"stations", "users", "cells"})
        ->Unit(benchmark::kMillisecond);
  }
  return true;
}();

}  // namespace
