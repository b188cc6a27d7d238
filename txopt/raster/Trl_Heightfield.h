// Trl_Heightfield: the ground heights of the plan, whole metres in 16-bit cells (roofs on
// building cells), kept in a mapped ".map" file, with the grid that places them, the legend
// that colours them and the rectangle of cells the terrain display shows. The placing comes
// from the file's free text: "xlc X ylc Y gridsize D minimum LOW maximum HIGH".
// Reference counted: holders add to refCount and give it up with release().
#pragma once

#include <string>

#include "raster/Trl_Grid.h"
#include "raster/Trl_Legend.h"
#include "raster/Trl_MappedMatrixT.h"

// Shifts the cell range a0..a1 inside 0..cells-1, keeping its length where it fits.
void shift_into(int& a0, int& a1, int cells);

class Trl_Heightfield {
 public:
  explicit Trl_Heightfield(const std::string& native_file_name);
  virtual ~Trl_Heightfield();
  Trl_Heightfield(const Trl_Heightfield&) = delete;
  Trl_Heightfield& operator=(const Trl_Heightfield&) = delete;

  void add_reference() { ++refCount; }
  void release();
  Trl_MappedMatrixT<short, double>* get_matrix() const { return matrix; }
  const Trl_Grid& get_grid() const { return grid; }
  // The height of a cell in m; no range check.
  short height(int column, int row) const { return matrix->data[matrix->entry(column, row)]; }
  // Shifts the rectangle of cells inside the raster, keeping its size.
  void set_view(int x0, int y0, int x1, int y1);

  int refCount;
  Trl_Legend legend;
  Trl_Grid grid;
  Trl_MappedMatrixT<short, double>* matrix;
  double minimum;
  double maximum;
  bool valid;
  int view_x0, view_y0, view_x1, view_y1;
};
