// PlanRasterWriter: writes Celvane's two rasters from plain arrays, for the tools that make
// plans (the synthetic city, the GIS import). Cells are indexed row * columns + column, row 0
// the southern one; heights in whole metres, building bits 0 or 1. These writers are apart
// from the program's readers, so that a reader fault cannot hide behind a writer fault.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class PlanRasterWriter {
 public:
  // Placing of both rasters: the centre of column 0 and row 0 (m) and the spacing (m).
  PlanRasterWriter(int columns, int rows, double x0, double y0, double cell);

  // The tiled ".map" height raster; heights must not be negative.
  bool write_heights(const std::string& path, const std::vector<short>& heights) const;
  // The run-length ".urb" building raster.
  bool write_clutter(const std::string& path, const std::vector<std::uint8_t>& built) const;

  // The largest row or column count both formats hold.
  static constexpr int max_cells = 65535;

 private:
  int columns, rows;
  double x0, y0, cell;
};
