#include "raster/Trl_Grid.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdlib>

Trl_Grid::Trl_Grid(std::uint32_t nx_, std::uint32_t ny_, double x0_, double y0_, double x1_, double y1_,
                   double dz_)
    : x0(x0_), x1(x1_), y0(y0_), y1(y1_), dz(dz_), nx(nx_), ny(ny_), cells(nx_ * ny_) {
  dx = nx > 1 ? (x1 - x0) / (nx - 1) : x1 - x0;
  dy = ny > 1 ? (y1 - y0) / (ny - 1) : y1 - y0;
}

Trl_Grid Trl_Grid::from_spacing(double x0, double y0, double dx, double dy, std::uint32_t nx,
                                std::uint32_t ny, double dz) {
  Trl_Grid g;
  g.x0 = x0;
  g.y0 = y0;
  g.dx = dx;
  g.dy = dy;
  g.nx = nx;
  g.ny = ny;
  g.cells = nx * ny;
  g.dz = dz;
  g.x1 = (static_cast<double>(nx) - 1) * dx + x0;
  g.y1 = (static_cast<double>(ny) - 1) * dy + y0;
  return g;
}

Trl_Grid::Trl_Grid() : Trl_Grid(2, 2, 0, 0, 1, 1, 1) {}

int Trl_Grid::column_of(const tk::point& p) const {
  double x = p.xcoord();
  if (x >= x1) return static_cast<int>(nx) - 1;
  if (x <= x0) return 0;
  return static_cast<int>(std::floor((dx * 0.5 + (x - x0)) / dx));
}

int Trl_Grid::row_of(const tk::point& p) const {
  double y = p.ycoord();
  if (y >= y1) return static_cast<int>(ny) - 1;
  if (y <= y0) return 0;
  return static_cast<int>(std::floor((dy * 0.5 + (y - y0)) / dy));
}

bool Trl_Grid::overlaps(double xmin, double ymin, double xmax, double ymax) const {
  return x0 <= xmax && x1 >= xmin && y0 <= ymax && y1 >= ymin;
}

bool Trl_Grid::intersect(const Trl_Grid& other, Trl_Grid& result) const {
  if (dx != other.dx || dy != other.dy) return false;
  if (other.x1 < x0 || x1 < other.x0 || other.y1 < y0 || y1 < other.y0) return false;
  double near_x = std::max(x0, other.x0), near_y = std::max(y0, other.y0);
  double far_x = std::min(x1, other.x1), far_y = std::min(y1, other.y1);
  // A spacing of 0 or below (height files do not check theirs) gives no count of cells:
  // such rasters have no common cells rather than a count converted out of range.
  const double across = std::floor((far_x - near_x) / dx + 0.5), down = std::floor((far_y - near_y) / dy + 0.5);
  if (!(across >= 0 && across < UINT32_MAX && down >= 0 && down < UINT32_MAX)) return false;
  std::uint32_t new_nx = static_cast<std::uint32_t>(across) + 1;
  std::uint32_t new_ny = static_cast<std::uint32_t>(down) + 1;
  result = from_spacing(near_x, near_y, dx, dy, new_nx, new_ny, dz);
  return true;
}

namespace {
// A shift in cells as an int; rasters so far apart that it does not fit stop at the int
// range, where they cannot overlap, instead of converting out of range.
int cells_between(double a, double b, double spacing) {
  const double cells = std::trunc((a - b) / spacing);
  if (!(cells > INT_MIN)) return INT_MIN;
  if (!(cells < INT_MAX)) return INT_MAX;
  return static_cast<int>(cells);
}
}  // namespace

bool Trl_Grid::offset_to(const Trl_Grid& other, int& di, int& dj) const {
  if (dx != other.dx || dy != other.dy) return false;
  di = cells_between(x0, other.x0, dx);
  dj = cells_between(y0, other.y0, dy);
  return true;
}

// ---- every cell

Trl_Grid::iterator::iterator(const Trl_Grid& g) : grid(&g), index(0), col(0), row(0) {}

Trl_Grid::iterator::iterator(const Trl_Grid& g, int c, int r) : grid(&g), index(0), col(c), row(r) {}

std::uint32_t Trl_Grid::iterator::advance() {
  if (++col == static_cast<int>(grid->nx)) {
    col = 0;
    ++row;
  }
  return ++index;
}

// ---- straight line

Trl_Grid::iterator_line::iterator_line(const Trl_Grid& g, int sc, int sr, int ec, int er)
    : iterator(g, sc, sr), start_col(sc), start_row(sr), end_col(ec), end_row(er) {
  int di = ec - sc, dj = er - sr;
  column_major = std::abs(di) >= std::abs(dj) ? 1 : 0;
  step_col = di < 0 ? -1 : 1;
  step_row = dj < 0 ? -1 : 1;
  int major = std::max(std::abs(di), std::abs(dj));
  int minor = std::min(std::abs(di), std::abs(dj));
  length = major + 1;
  inc_straight = 2 * minor;
  inc_diagonal = 2 * (minor - major);
  decision = 2 * minor - major;
}

std::uint32_t Trl_Grid::iterator_line::advance() {
  int& major_pos = column_major ? col : row;
  int& minor_pos = column_major ? row : col;
  major_pos += column_major ? step_col : step_row;
  if (decision >= 0) {
    minor_pos += column_major ? step_row : step_col;
    decision += inc_diagonal;
  } else {
    decision += inc_straight;
  }
  return ++index;
}

bool Trl_Grid::iterator_line::same_walk(const iterator_line& o) const {
  return index == o.index && start_col == o.start_col && start_row == o.start_row && end_col == o.end_col &&
         end_row == o.end_row;
}

// ---- border

Trl_Grid::iterator_border::iterator_border(const Trl_Grid& g, int sc, int sr, int ec, int er)
    : iterator(g, sc, sr), start_col(sc), start_row(sr), end_col(ec), end_row(er) {
  width = ec - sc + 1;
  height = er - sr + 1;
  total = 2 * (width + height) - 4;
  heading = 1;
}

std::uint32_t Trl_Grid::iterator_border::advance() {
  switch (heading) {
    case 1:
      if (col == end_col) {
        ++row;
        heading = 0;
      } else {
        ++col;
      }
      break;
    case 0:
      if (row == end_row) {
        --col;
        heading = 3;
      } else {
        ++row;
      }
      break;
    case 3:
      if (col == start_col) {
        --row;
        heading = 2;
      } else {
        --col;
      }
      break;
    default:
      if (row == start_row) {
        ++col;
        heading = 1;
      } else {
        --row;
      }
      break;
  }
  return ++index;
}

bool Trl_Grid::iterator_border::same_walk(const iterator_border& o) const {
  return index == o.index && start_col == o.start_col && start_row == o.start_row && end_col == o.end_col &&
         end_row == o.end_row;
}
