// PlanSurface: the heights and building bits of a terrain being imported, on a GeoGrid, in
// Celvane's order (row 0 the southern one), and their writing as PREFIX.map, PREFIX.urb and
// PREFIX.geo.json: all three, or none.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "geo/GeoGrid.h"

class PlanSurface {
 public:
  explicit PlanSurface(const GeoGrid& grid);

  // Ground heights from resampled values (north row first), rounded to whole metres. Cells
  // the raster did not reach take its lowest height and are counted in filled_cells.
  bool take_ground(const std::vector<double>& north_first, std::string& error);
  // Footprints rasterised into the building bits; with a height field (the named one, or
  // "height" when the layer has it) their heights raise the surface.
  bool add_buildings(const std::string& path, const std::string& height_field, std::string& error);
  bool write(const std::string& prefix, std::string& error) const;

  int filled_cells = 0;
  std::vector<short> heights;      // m
  std::vector<std::uint8_t> built;

 private:
  size_t plan_index(size_t north_first_index) const;
  const GeoGrid& grid;
};
