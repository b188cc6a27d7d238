#include "network/Trl_RxGridDistribution.h"

#include <algorithm>
#include <climits>
#include <string>
#include <vector>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_DistributionWindow.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/window.h"

namespace {
bool keyword(std::istream& in, const char* word) {
  std::string token;
  return static_cast<bool>(in >> token) && token == word;
}

// A count is an unsigned 16-bit number: a negative one, or one past 65535, fails the read
// like a token that is no number, rather than being kept modulo 65536.
bool read_count(std::istream& in, unsigned short& count) {
  long long value = 0;
  if (!(in >> value) || value < 0 || value > 65535) return false;
  count = static_cast<unsigned short>(value);
  return true;
}
}  // namespace

Trl_RxGridDistribution::Trl_RxGridDistribution(std::istream& in) : matrix(nullptr) {
  unsigned columns = 0, rows = 0;
  double x0 = 0, y0 = 0, cell = 0;
  long nodata = 0;
  if (!keyword(in, "ncols") || !(in >> columns) || !keyword(in, "nrows") || !(in >> rows) ||
      !keyword(in, "xllcorner") || !(in >> x0) || !keyword(in, "yllcorner") || !(in >> y0) ||
      !keyword(in, "cellsize") || !(in >> cell) || !keyword(in, "NODATA_value") || !(in >> nodata))
    return;
  if (columns < 2 || rows < 2 || !(cell > 0) || columns > 65535 || rows > 65535) return;
  // The counts are read before the matrix is made, so a header that promises more cells than
  // the file holds costs no more memory than the file itself.
  const std::size_t cells = static_cast<std::size_t>(columns) * rows;
  std::vector<unsigned short> counts;
  counts.reserve(std::min<std::size_t>(cells, 1 << 16));
  while (counts.size() < cells) {
    unsigned short value = 0;
    if (!read_count(in, value)) return;
    counts.push_back(value);
  }
  grid = Trl_Grid(columns, rows, x0, y0, x0 + (columns - 1) * cell, y0 + (rows - 1) * cell, 1.0);
  matrix = new Trl_MatrixT<unsigned short, double>(rows, columns);
  // The first value is cell (0, 0) and the column runs fastest.
  std::copy(counts.begin(), counts.end(), matrix->data);
  matrix->min_max(low, high);
  // The sum of 65535 in each of many cells passes the largest int: it stops there.
  const double sum = matrix->sum();
  total = sum < static_cast<double>(INT_MAX) ? static_cast<int>(sum) : INT_MAX;
  valid = true;
}

Trl_RxGridDistribution::~Trl_RxGridDistribution() {
  Trl_DistributionWindow::forget(this);
  delete matrix;
}

tk::point Trl_RxGridDistribution::min_corner() const {
  return tk::point(grid.x0 - 0.5 * grid.dx, grid.y0 - 0.5 * grid.dy);
}

tk::point Trl_RxGridDistribution::max_corner() const {
  return tk::point(grid.x1 + 0.5 * grid.dx, grid.y1 + 0.5 * grid.dy);
}

void Trl_RxGridDistribution::draw_outline(tk::window& w, int colour) const {
  w.draw_rectangle(min_corner(), max_corner(), colour);
}

void Trl_RxGridDistribution::sample(tk::list<Trl_Rx>& users, const Trl_Terrain* terrain, double fraction,
                                    bool streets_only, const Trl_RxTemplate& values) {
  users.clear();
  int number = 0;
  for (unsigned k = 0; k < matrix->size; ++k) {
    int v = matrix->data[k];
    if (v == 0) continue;
    int i = static_cast<int>(k % matrix->columns), j = static_cast<int>(k / matrix->columns);
    double cx = grid.x0 + i * grid.dx, cy = grid.y0 + j * grid.dy;
    Trl_RandomRegion region(cx - 0.5 * grid.dx, cx + 0.5 * grid.dx, cy - 0.5 * grid.dy, cy + 0.5 * grid.dy, 1);
    bool on_terrain = !terrain || terrain->height_grid().overlaps(region.xmin, region.ymin, region.xmax, region.ymax);
    sample_piece(users, number, v, fraction, region, on_terrain, terrain, streets_only, values, true);
  }
}

void Trl_RxGridDistribution::draw(bool redraw_all, int x0, int y0, int x1, int y1) {
  Trl_DistributionWindow::show_grid(*this, redraw_all, x0, y0, x1, y1);
}
