// The Xia-Bertoni model filling the table of path gains for 40 base stations and 10,000
// mobile users on the sample city (1 km square of 2 m cells): the solver's fill in angular
// order round each base station, the same fill on two threads, and beside them the plain
// double loop over the same model. Counters: microseconds per pair and seconds per table.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench_city.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assigner.h"
#include "toolkit/directory.h"
#include "toolkit/list.h"

namespace {

// The plan: 40 base stations, every second one 5 m over a roof and the others 35 m over a
// street, and 10,000 users at 1.5 m in the streets, placed by a fixed linear congruential
// walk so that every run sees the same plan.
struct Plan {
  Trl_Terrain* terrain;
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;

  Plan(int stations, int users) : terrain(new Trl_Terrain) {
    terrain->load(tk::to_drive_path(bench_city_file()), [](const tk::string& s) { std::fprintf(stderr, "%s\n", s.cstring()); });
    if (!terrain->loaded()) return;
    const Trl_Grid& g = terrain->height_grid();
    unsigned state = 4711;
    auto next = [&state]() {
      state = state * 1103515245u + 12345u;
      return (state >> 8) / double(1 << 24);
    };
    auto place = [&](bool on_roof, double& x, double& y, int& i, int& j) {
      do {
        x = g.x0 + (g.x1 - g.x0) * next();
        y = g.y0 + (g.y1 - g.y0) * next();
        i = g.column_of(tk::point(x, y));
        j = g.row_of(tk::point(x, y));
      } while (terrain->is_open(i, j) == on_roof);
    };
    for (int t = 0; t < stations; ++t) {
      double x, y;
      int i, j;
      const bool on_roof = t % 2 == 0;
      place(on_roof, x, y, i, j);
      const double z = on_roof ? terrain->height(i, j) + 5.0 : 35.0;
      tx.append(Trl_Tx(tk::d3_point(x, y, z), tk::string("BS%04d", t), t, 20, 2, 1, std::pow(10.0, 0.9),
                       std::pow(10.0, 0.5), 0.4, 0));
    }
    for (int r = 0; r < users; ++r) {
      double x, y;
      int i, j;
      place(false, x, y, i, j);
      Trl_Rx u(tk::d3_point(x, y, 1.5), r, std::pow(10.0, 1.0), std::pow(10.0, 0.55), std::pow(10.0, 0.9),
               std::pow(10.0, -0.9), std::pow(10.0, -8.0), std::pow(10.0, -0.3), 0.66, 12.2, 12.2, 0);
      u.set_cell(i, j);
      rx.append(u);
    }
  }
  ~Plan() { terrain->release(); }

  Trl_XiaBertoni model() const {
    return Trl_XiaBertoni(terrain, 2, 1500, 0.95, true, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
  }
};

Plan& plan() {
  static Plan p(40, 10000);
  return p;
}

// Seconds per table and microseconds per pair from the wall time of the timed loop, as
// plain numbers.
void report(benchmark::State& state, double pairs, std::chrono::steady_clock::duration spent) {
  const double seconds = std::chrono::duration<double>(spent).count() / static_cast<double>(state.iterations());
  state.counters["s_per_table"] = seconds;
  state.counters["us_per_pair"] = seconds * 1e6 / pairs;
}

// The solver's fill: angular order round each base station; argument 1 runs two threads.
void BM_XiaBertoniAngularFill(benchmark::State& state) {
  Plan& p = plan();
  if (!p.terrain->loaded()) {
    state.SkipWithError("no sample city");
    return;
  }
  Trl_XiaBertoni m = p.model();
  Trl_Assigner assigner;
  Trl_Assigner::terrain_fill_threads = state.range(0) != 0 ? 2 : 1;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(p.tx, p.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains_in_angular_order(p.tx, p.rx, m, *p.terrain, Trl_Assigner::status_function());
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  Trl_Assigner::terrain_fill_threads = 1;
  report(state, static_cast<double>(p.tx.size()) * p.rx.size(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_XiaBertoniAngularFill)->Arg(0)->Arg(1)->Iterations(2)->UseRealTime()->Unit(benchmark::kMillisecond);

// The plain double loop over the same model: base stations in list order, users in list
// order, as the solver does without a terrain.
void BM_XiaBertoniPlainLoop(benchmark::State& state) {
  Plan& p = plan();
  if (!p.terrain->loaded()) {
    state.SkipWithError("no sample city");
    return;
  }
  Trl_XiaBertoni m = p.model();
  tk::list<Trl_Tx> stations;
  for (Trl_Tx tx : p.tx) {
    tx.set_cell(p.terrain->height_grid());
    stations.append(tx);
  }
  Trl_Assigner assigner;
  const auto start = std::chrono::steady_clock::now();
  for (auto _ : state) {
    assigner.make_tables(stations, p.rx, Trl_Assigner::parameters());
    assigner.fill_path_gains(stations, p.rx, m);
    benchmark::DoNotOptimize(assigner.path_gain.row(0)[0]);
  }
  report(state, static_cast<double>(p.tx.size()) * p.rx.size(), std::chrono::steady_clock::now() - start);
}
BENCHMARK(BM_XiaBertoniPlainLoop)->Iterations(2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
