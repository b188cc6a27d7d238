#include "propagation/Trl_CoverageMap.h"

#include <algorithm>
#include <cmath>

#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Heightfield.h"
#include "raster/Trl_Terrain.h"

void Trl_CoverageMap::square(const Trl_Grid& grid, int i, int j, int radius, int& c0, int& r0, int& c1, int& r1) {
  c0 = i - radius;
  c1 = i + radius - 1;
  r0 = j - radius;
  r1 = j + radius - 1;
  shift_into(c0, c1, static_cast<int>(grid.nx));
  shift_into(r0, r1, static_cast<int>(grid.ny));
}

namespace {

int profile_cells(const Trl_Terrain& terrain) {
  const Trl_Grid& g = terrain.height_grid();
  return static_cast<int>(std::max(g.nx, g.ny));
}

}  // namespace

Trl_CoverageMap::Trl_CoverageMap(Trl_Terrain& t, Trl_XiaBertoni& m, const Trl_Tx& station, const Trl_Rx& templ,
                                 bool buildings)
    : terrain(t),
      model(m),
      tx(station),
      user(templ),
      in_buildings(buildings),
      heights(profile_cells(t)),
      columns(profile_cells(t)),
      rows(profile_cells(t)),
      bits(profile_cells(t), true) {}

Trl_CoverageRaster* Trl_CoverageMap::compute(int c0, int r0, int c1, int r1, const progress_function& progress) {
  const Trl_Grid& g = terrain.height_grid();
  const int width = c1 - c0 + 1, height = r1 - r0 + 1;
  Trl_CoverageRaster* raster = new Trl_CoverageRaster(Trl_Grid::from_spacing(
      c0 * g.dx + g.x0, r0 * g.dy + g.y0, g.dx, g.dy, static_cast<std::uint32_t>(width),
      static_cast<std::uint32_t>(height), g.dz));
  const double total = 2.0 * (width + height) - 4;
  double threshold = 0.01;
  int done = 0;
  for (Trl_Grid::iterator_border it(g, c0, r0, c1, r1); !it.at_end(); it.advance()) {
    if (terrain.in_clutter(it.col, it.row)) fan_line(*raster, c0, r0, it.col, it.row);
    // The share grows by border cell, not by cell computed, so the steps are uneven. The
    // threshold is summed up in steps of 0.01, which lands a hair above 1 at the end: the
    // last report is the one before the full 100 percent.
    const double fraction = ++done / total;
    if (fraction >= threshold) {
      progress(fraction);
      threshold += 0.01;
    }
  }
  return raster;
}

// One profile from the base station to a border cell; each cell of the line not yet reached
// gets the loss over the cells before it, the cell itself not included.
void Trl_CoverageMap::fan_line(Trl_CoverageRaster& raster, int c0, int r0, int end_col, int end_row) {
  int n = 0, bit_count = 0;
  terrain.height_profile(tx.cell_i, tx.cell_j, end_col, end_row, 0, n, heights.data(), columns.data(), rows.data());
  terrain.clutter_profile(tx.cell_i, tx.cell_j, end_col, end_row, bit_count, bits);
  line.index(heights.data(), bits, n);
  const Trl_Grid& g = terrain.height_grid();
  for (int k = n - 1; k >= 1; --k) {
    double& loss = raster.at(columns[k] - c0, rows[k] - r0);
    // The bit of the profile is the clutter bit of the cell: a building unless asked for.
    if (loss != 0 || (!in_buildings && bits.test(k))) continue;
    user.position = tk::d3_point(columns[k] * g.dx + g.x0, rows[k] * g.dy + g.y0, user.position.zcoord());
    user.set_cell(columns[k], rows[k]);
    loss = -10 * std::log10(model.gain_on_prefix(tx, user, line, k));
  }
}
