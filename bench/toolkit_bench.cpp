// Toolkit values: the random source and list sorting, the two the searches lean on.
#include <benchmark/benchmark.h>

#include "raster/Trl_Grid.h"
#include "toolkit/list.h"
#include "toolkit/random_source.h"

namespace {

void BM_RandomSourceDouble(benchmark::State& state) {
  tk::random_source random(1u);
  double x = 0, sum = 0;
  for (auto _ : state) {
    random >> x;
    sum += x;
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_RandomSourceDouble);

int three_way(const double& a, const double& b) { return a < b ? -1 : (a > b ? 1 : 0); }

void BM_ListSort(benchmark::State& state) {
  tk::random_source random(2u);
  for (auto _ : state) {
    state.PauseTiming();
    tk::list<double> l;
    for (int i = 0; i < state.range(0); ++i) {
      double x;
      random >> x;
      l.append(x);
    }
    state.ResumeTiming();
    l.sort(three_way);
    benchmark::DoNotOptimize(l.head());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_ListSort)->Arg(100000);

void BM_LineWalk(benchmark::State& state) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 2000, 2000, 1);
  long sum = 0;
  for (auto _ : state) {
    for (Trl_Grid::iterator_line it(g, 0, 0, 999, 371); !it.at_end(); it.advance()) sum += it.cell_index();
  }
  benchmark::DoNotOptimize(sum);
  state.SetItemsProcessed(state.iterations() * 1000);
}
BENCHMARK(BM_LineWalk);

}  // namespace
