// The pathloss coverage map at the default radius (150 cells, a square of 300 by 300) round
// a base station 30 m over a street near the middle of the sample city: the fan of lines to
// the square's border, one profile per line, beside the obvious way, a line walked from the
// base station to every cell on its own, with the same model. Counters: CPU milliseconds
// of each, their ratio, and the largest difference (dB) over the cells that both reach by the
// same line.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>
#include <cmath>
#include <cstdio>
#include <vector>

#include "bench_city.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_CoverageMap.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

namespace {

const int radius = 150;

struct Square {
  int c0, r0, c1, r1;
};

Trl_XiaBertoni model_on(Trl_Terrain* terrain) {
  return Trl_XiaBertoni(terrain, 2, 1500, 0.95, true, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
}

Trl_Rx user_template() {
  return Trl_Rx(tk::d3_point(0, 0, 1.5), 1, std::pow(10.0, 0.55), std::pow(10.0, 1.0), std::pow(10.0, 0.9), 0.125,
                1e-11, std::pow(10.0, -0.3), 0.5, 12.2, 12.2, 0);
}

// The open cell nearest to the middle along its row, as a planner would put a mast.
Trl_Tx station_near_middle(const Trl_Terrain& t) {
  const Trl_Grid& g = t.height_grid();
  int i = static_cast<int>(g.nx / 2), j = static_cast<int>(g.ny / 2);
  while (i + 1 < static_cast<int>(g.nx) && !t.is_open(i, j)) ++i;
  Trl_Tx tx;
  tx.position = tk::d3_point(i * g.dx + g.x0, j * g.dy + g.y0, 30);
  tx.set_cell(g);
  return tx;
}

// CPU time of this thread in ms: the machine may be shared, and the ratio should not follow
// the load of others.
double thread_milliseconds() {
  timespec t;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return t.tv_sec * 1e3 + t.tv_nsec * 1e-6;
}

// The obvious way: every cell of the square but the base station's own on a line of its
// own, fetched through the same terrain profiles as the fan and given to the same model on
// the cells before the target.
std::vector<double> plain_map(const Trl_Terrain& t, Trl_XiaBertoni& model, const Trl_Tx& tx, Trl_Rx user,
                              const Square& s) {
  const Trl_Grid& g = t.height_grid();
  const int width = s.c1 - s.c0 + 1;
  std::vector<double> loss(static_cast<size_t>(width) * (s.r1 - s.r0 + 1), 0.0);
  std::vector<double> heights(std::max(g.nx, g.ny));
  Trl_TxBitvector bits(static_cast<int>(heights.size()), true);
  for (int r = s.r0; r <= s.r1; ++r)
    for (int c = s.c0; c <= s.c1; ++c) {
      if (c == tx.cell_i && r == tx.cell_j) continue;
      int n = 0;
      t.height_profile(tx.cell_i, tx.cell_j, c, r, 0, n, heights.data());
      t.clutter_profile(tx.cell_i, tx.cell_j, c, r, n, bits);
      user.position = tk::d3_point(c * g.dx + g.x0, r * g.dy + g.y0, user.position.zcoord());
      user.set_cell(c, r);
      loss[static_cast<size_t>(r - s.r0) * width + (c - s.c0)] =
          -10 * std::log10(model.gain_on_profile(tx, user, heights.data(), bits, n - 1));
    }
  return loss;
}

// The cells whose fan value comes from a line that is also their own line: the fan's first
// reaching line (border order, lines in the clutter) where its first k cells are the cells
// of the direct walk to cell k.
std::vector<char> same_line_cells(const Trl_Terrain& t, const Trl_Tx& tx, const Square& s) {
  const Trl_Grid& g = t.height_grid();
  const int width = s.c1 - s.c0 + 1;
  std::vector<char> decided(static_cast<size_t>(width) * (s.r1 - s.r0 + 1), 0), same(decided.size(), 0);
  std::vector<Trl_Grid::iterator_line> walk;
  for (Trl_Grid::iterator_border b(g, s.c0, s.r0, s.c1, s.r1); !b.at_end(); b.advance()) {
    if (!t.in_clutter(b.col, b.row)) continue;
    std::vector<std::pair<int, int>> line;
    for (Trl_Grid::iterator_line it(g, tx.cell_i, tx.cell_j, b.col, b.row); !it.at_end(); it.advance())
      line.emplace_back(it.col, it.row);
    for (size_t k = 1; k < line.size(); ++k) {
      const size_t at = static_cast<size_t>(line[k].second - s.r0) * width + (line[k].first - s.c0);
      if (decided[at]) continue;
      decided[at] = 1;
      size_t m = 0;
      for (Trl_Grid::iterator_line it(g, tx.cell_i, tx.cell_j, line[k].first, line[k].second); !it.at_end();
           it.advance(), ++m)
        if (m > k || it.col != line[m].first || it.row != line[m].second) break;
      same[at] = m == k + 1;
    }
  }
  return same;
}

void BM_CoverageFanBesidePlainLines(benchmark::State& state) {
  Trl_Terrain* terrain = new Trl_Terrain;
  terrain->load(tk::to_drive_path(bench_city_file()), [](const tk::string& s) { std::fprintf(stderr, "%s\n", s.cstring()); });
  if (!terrain->loaded()) {
    state.SkipWithError("no sample city");
    terrain->release();
    return;
  }
  const Trl_Grid& g = terrain->height_grid();
  const Trl_Tx tx = station_near_middle(*terrain);
  Square s;
  Trl_CoverageMap::square(g, tx.cell_i, tx.cell_j, radius, s.c0, s.r0, s.c1, s.r1);
  const int width = s.c1 - s.c0 + 1;
  double fan_ms = 0, plain_ms = 0;
  std::vector<double> fan(static_cast<size_t>(width) * (s.r1 - s.r0 + 1)), plain;
  for (auto _ : state) {
    Trl_XiaBertoni fan_model = model_on(terrain), plain_model = model_on(terrain);
    double start = thread_milliseconds();
    Trl_CoverageMap map(*terrain, fan_model, tx, user_template(), true);
    Trl_CoverageRaster* raster = map.compute(s.c0, s.r0, s.c1, s.r1, [](double) {});
    fan_ms += thread_milliseconds() - start;
    std::copy(raster->matrix.data, raster->matrix.data + raster->matrix.size, fan.begin());
    raster->release();
    start = thread_milliseconds();
    plain = plain_map(*terrain, plain_model, tx, user_template(), s);
    plain_ms += thread_milliseconds() - start;
  }
  const std::vector<char> same = same_line_cells(*terrain, tx, s);
  double worst = 0;
  long compared = 0;
  for (size_t i = 0; i < same.size(); ++i)
    if (same[i]) {
      worst = std::max(worst, std::fabs(fan[i] - plain[i]));
      ++compared;
    }
  const double n = static_cast<double>(state.iterations());
  state.counters["fan_ms"] = fan_ms / n;
  state.counters["plain_ms"] = plain_ms / n;
  state.counters["ratio"] = plain_ms / fan_ms;
  state.counters["same_line_cells"] = static_cast<double>(compared);
  state.counters["max_diff_db"] = worst;
  std::printf("coverage map %dx%d: fan %.1f ms, plain lines %.1f ms, ratio %.1f; %ld cells by the same line, "
              "largest difference %.3g dB\n",
              width, s.r1 - s.r0 + 1, fan_ms / n, plain_ms / n, plain_ms / fan_ms, compared, worst);
  terrain->release();
}
BENCHMARK(BM_CoverageFanBesidePlainLines)->Iterations(3)->Unit(benchmark::kMillisecond);

}  // namespace
