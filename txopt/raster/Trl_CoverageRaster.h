// Trl_CoverageRaster: the path loss (dB) around one base station on a square of cells, the
// result of "Draw pathloss coverage". A cell left at 0 was not computed; the legend puts it
// below its first class. Reference counted: the coverage display holds it while it shows it.
#pragma once

#include "raster/Trl_ExtMatrixT.h"
#include "raster/Trl_Grid.h"
#include "raster/Trl_Legend.h"

class Trl_CoverageRaster {
 public:
  // A zero-filled raster of the grid's columns and rows.
  explicit Trl_CoverageRaster(const Trl_Grid& grid);
  Trl_CoverageRaster(const Trl_CoverageRaster&) = delete;
  Trl_CoverageRaster& operator=(const Trl_CoverageRaster&) = delete;

  void add_reference() { ++refCount; }
  void release();
  // Path loss in dB of cell (column, row) of the raster's own grid.
  double& at(int column, int row) { return matrix.ref(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row)); }
  double value(int column, int row) const {
    return matrix.get(static_cast<std::uint32_t>(column), static_cast<std::uint32_t>(row));
  }

  int refCount;
  Trl_ExtMatrixT<double, double> matrix;  // dB, rows and columns of the grid
  Trl_Legend legend;                      // 14 classes of 10 dB from 50 dB
  Trl_Grid grid;

 private:
  ~Trl_CoverageRaster() {}
};
