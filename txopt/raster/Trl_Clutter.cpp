#include "raster/Trl_Clutter.h"

#include "raster/Trl_Heightfield.h"

#include <string>

const char* const Trl_Clutter::magic = "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs";

Trl_Clutter::Trl_Clutter(std::istream& in)
    : refCount(1),
      legend(false, 2, 0, 1),
      grid(2, 2, 0, 0, 1, 1, 1),
      matrix(new Trl_Runbitmatrix),
      valid(false),
      view_x0(0),
      view_y0(0),
      view_x1(0),
      view_y1(0),
      rows(0),
      columns(0) {
  std::string line;
  std::getline(in, line);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (line.size() > 4096 || line != magic) return;
  double x0 = 0, y0 = 0, spacing = 0;
  in >> x0 >> y0 >> spacing;
  matrix->read(in);
  rows = matrix->rows;
  columns = matrix->columns;
  // A file whose numbers are missing leaves an empty raster; it cannot be asked.
  if (rows == 0 || columns == 0) return;
  grid = Trl_Grid::from_spacing(x0, y0, spacing, spacing, columns, rows, 1);
  view_x1 = static_cast<int>(grid.nx) - 1 < 299 ? static_cast<int>(grid.nx) - 1 : 299;
  view_y1 = static_cast<int>(grid.ny) - 1 < 299 ? static_cast<int>(grid.ny) - 1 : 299;
  valid = true;
}

Trl_Clutter::~Trl_Clutter() { delete matrix; }

void Trl_Clutter::release() {
  if (--refCount == 0) delete this;
}

void Trl_Clutter::set_view(int x0, int y0, int x1, int y1) {
  shift_into(x0, x1, static_cast<int>(columns));
  shift_into(y0, y1, static_cast<int>(rows));
  view_x0 = x0;
  view_y0 = y0;
  view_x1 = x1;
  view_y1 = y1;
}
