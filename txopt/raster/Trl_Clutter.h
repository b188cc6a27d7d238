// Trl_Clutter: the building map of the plan, read from a ".urb" file: the run-length bit
// raster (set where a building stands), the grid that places it, a two-class legend and
// the rectangle of cells the clutter display shows. Reference counted like the heights.
#pragma once

#include <istream>

#include "raster/Trl_Grid.h"
#include "raster/Trl_Legend.h"
#include "raster/Trl_Runbitmatrix.h"

class Trl_Clutter {
 public:
  static const char* const magic;  // line 1 of a ".urb" file

  explicit Trl_Clutter(std::istream& in);
  ~Trl_Clutter();
  Trl_Clutter(const Trl_Clutter&) = delete;
  Trl_Clutter& operator=(const Trl_Clutter&) = delete;

  void add_reference() { ++refCount; }
  void release();
  Trl_Runbitmatrix* get_matrix() const { return matrix; }
  const Trl_Grid& get_grid() const { return grid; }
  bool built(int column, int row) const { return matrix->get(static_cast<std::uint16_t>(column), row); }
  void set_view(int x0, int y0, int x1, int y1);

  int refCount;
  Trl_Legend legend;
  Trl_Grid grid;
  Trl_Runbitmatrix* matrix;
  bool valid;
  int view_x0, view_y0, view_x1, view_y1;
  std::uint32_t rows, columns;
};
