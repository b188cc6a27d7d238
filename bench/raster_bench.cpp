// The terrain: opening the sample city, height lookups, a profile walk and resampling.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "network/Trl_TxBitvector.h"
#include "raster/Trl_MatrixT.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"
#include "toolkit/random_source.h"

namespace {

// The sample city, made once by celvane-citygen in a folder of the benchmark's own.
std::string city() {
  static std::string path;
  if (path.empty()) {
    std::string dir = (std::filesystem::temp_directory_path() / "celvane_bench_city").string();
    std::filesystem::create_directories(dir);
    std::string generator = std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen";
    std::string command = generator + " --out " + dir + " --cells 500 --cell 2";
    if (std::system(command.c_str()) != 0) std::fprintf(stderr, "cannot make the sample city\n");
    path = dir + "/terrain.map";
  }
  return path;
}

Trl_Terrain* open_city() {
  Trl_Terrain* t = new Trl_Terrain;
  t->load(tk::to_drive_path(city()), [](const tk::string&) {});
  return t;
}

void BM_OpenSampleCity(benchmark::State& state) {
  city();
  for (auto _ : state) {
    Trl_Terrain* t = open_city();
    benchmark::DoNotOptimize(t->loaded());
    t->release();
  }
  state.SetLabel("ms per open: see Time");
}
BENCHMARK(BM_OpenSampleCity)->Unit(benchmark::kMillisecond);

void BM_RandomHeightLookup(benchmark::State& state) {
  Trl_Terrain* t = open_city();
  tk::random_source random(5u);
  int cells[4096][2];
  for (auto& c : cells) {
    c[0] = random(0, 499);
    c[1] = random(0, 499);
  }
  long sum = 0;
  unsigned k = 0;
  for (auto _ : state) {
    sum += t->height(cells[k & 4095][0], cells[k & 4095][1]);
    ++k;
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(state.iterations());
  t->release();
}
BENCHMARK(BM_RandomHeightLookup);

void BM_ProfileWalk1000Cells(benchmark::State& state) {
  Trl_Terrain* t = open_city();
  double heights[1000];
  int count = 0;
  Trl_TxBitvector bits(1000, true);
  for (auto _ : state) {
    t->height_profile(0, 0, 499, 120, 0.0, count, heights);
    t->clutter_profile(0, 0, 499, 120, count, bits);
    t->height_profile(499, 499, 0, 380, 0.0, count, heights);
    t->clutter_profile(499, 499, 0, 380, count, bits);
    benchmark::DoNotOptimize(heights[count - 1]);
  }
  state.SetItemsProcessed(state.iterations() * 1000);  // cells walked, heights and bits
  t->release();
}
BENCHMARK(BM_ProfileWalk1000Cells);

void BM_Resample2000To600(benchmark::State& state) {
  Trl_MatrixT<double, double> big(2000, 2000, 1.0);
  Trl_MatrixT<double, double> view(600, 600);
  for (auto _ : state) {
    view.resample(big);
    benchmark::DoNotOptimize(view.data[0]);
  }
}
BENCHMARK(BM_Resample2000To600)->Unit(benchmark::kMillisecond);

}  // namespace
