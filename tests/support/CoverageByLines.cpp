#include "support/CoverageByLines.h"

#include <cmath>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Terrain.h"

namespace {

bool built(const Trl_Terrain& t, int i, int j) {
  const int ci = i + t.offset_i, cj = j + t.offset_j;
  return t.in_clutter(i, j) && t.clutter->built(ci, cj);
}

// Position of (col, row) on the line from the base station to (end_col, end_row), or -1.
int place_on_line(const Trl_Terrain& t, const Trl_Tx& tx, int end_col, int end_row, int col, int row) {
  int k = 0;
  for (Trl_Grid::iterator_line it(t.height_grid(), tx.cell_i, tx.cell_j, end_col, end_row); !it.at_end();
       it.advance(), ++k)
    if (it.col == col && it.row == row) return k;
  return -1;
}

// The loss at cell k of the line over the profile of cells 0 to k - 1.
double loss_on_line(const Trl_Terrain& t, Trl_XiaBertoni& model, const Trl_Tx& tx, Trl_Rx user, int end_col,
                    int end_row, int k) {
  std::vector<double> heights;
  Trl_TxBitvector bits(k, true);
  Trl_Grid::iterator_line it(t.height_grid(), tx.cell_i, tx.cell_j, end_col, end_row);
  for (int n = 0; n < k; ++n, it.advance()) {
    heights.push_back(t.height(it.col, it.row));
    bits.assign(n, built(t, it.col, it.row));
  }
  const Trl_Grid& g = t.height_grid();
  user.position = tk::d3_point(it.col * g.dx + g.x0, it.row * g.dy + g.y0, user.position.zcoord());
  user.set_cell(it.col, it.row);
  return -10 * std::log10(model.gain_on_profile(tx, user, heights.data(), bits, k));
}

}  // namespace

double loss_by_first_line(const Trl_Terrain& t, Trl_XiaBertoni& model, const Trl_Tx& tx, const Trl_Rx& user,
                          const CoverageSquare& s, int col, int row, bool in_buildings) {
  if (!in_buildings && built(t, col, row)) return 0;
  for (Trl_Grid::iterator_border b(t.height_grid(), s.c0, s.r0, s.c1, s.r1); !b.at_end(); b.advance()) {
    if (!t.in_clutter(b.col, b.row)) continue;
    const int k = place_on_line(t, tx, b.col, b.row, col, row);
    if (k >= 1) return loss_on_line(t, model, tx, user, b.col, b.row, k);
  }
  return 0;
}
