// One validation sample of the best-set search on the sample city with the Xia-Bertoni model:
// fresh uniform users in the streets, the full preparation with its table of path gains,
// the prefix selected, and the power equations solved. Counters: milliseconds per sample and
// the share of it spent in the preparation (almost all of which is the path gains). The
// second argument fills the path gains on two threads.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "app/Trl_Planner.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assignment.h"
#include "toolkit/directory.h"

namespace {

std::string sample_city() {
  const std::string sample = std::string(CELVANE_SOURCE_DIR) + "/data";
  if (std::filesystem::exists(sample + "/terrain.map")) return sample;
  const std::string dir = (std::filesystem::temp_directory_path() / "celvane_bench_city").string();
  if (!std::filesystem::exists(dir + "/terrain.map")) {
    std::filesystem::create_directories(dir);
    const std::string command = std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen --out " + dir;
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "cannot make the sample city\n");
  }
  return dir;
}

// The planner with the sample city's terrain and base stations, users drawn in its streets.
struct City {
  Trl_Planner p;
  explicit City(int users) {
    const std::string dir = sample_city();
    p.terrain = new Trl_Terrain;
    p.terrain->load(tk::to_drive_path(dir + "/terrain.map"), [](const tk::string&) {});
    std::ifstream stations(dir + "/bs.dtx");
    tk::point low, high;
    Trl_Tx::read_list(stations, p.tx_template(), p.tx_list, low, high);
    tk::list<Trl_Tx> working;
    p.working_list(working);
    const Trl_Grid& g = p.terrain->height_grid();
    p.rx_region = Trl_RandomRegion(g.x0, g.x1, g.y0, g.y1, users);
    p.only_in_street = true;
  }
};

void BM_BestSetValidationSample(benchmark::State& state) {
  City city(static_cast<int>(state.range(0)));
  Trl_Planner& p = city.p;
  if (!p.terrain->loaded() || p.tx_list.empty()) {
    state.SkipWithError("no sample city");
    return;
  }
  tk::list<int> prefix;
  for (int k = 0; k < p.tx_list.size(); ++k) prefix.append(k);
  Trl_Assigner::terrain_fill_threads = state.range(1) != 0 ? 2 : 1;
  std::chrono::steady_clock::duration preparing{}, whole{};
  for (auto _ : state) {
    p.generate_users();
    const auto start = std::chrono::steady_clock::now();
    p.prepare_assignment(p.tx_list);
    const auto prepared = std::chrono::steady_clock::now();
    p.assignment->select(prefix);
    benchmark::DoNotOptimize(p.solve_current(nullptr));
    const auto end = std::chrono::steady_clock::now();
    preparing += prepared - start;
    whole += end - start;
  }
  Trl_Assigner::terrain_fill_threads = 1;
  const double n = static_cast<double>(state.iterations());
  state.counters["ms_per_sample"] = std::chrono::duration<double, std::milli>(whole).count() / n;
  state.counters["prepare_share"] =
      std::chrono::duration<double>(preparing).count() / std::chrono::duration<double>(whole).count();
}
BENCHMARK(BM_BestSetValidationSample)->Args({400, 0})->Args({400, 1})->Args({4000, 0})->Args({4000, 1})->Iterations(3)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
