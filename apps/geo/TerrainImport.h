// TerrainImport: cuts a Celvane terrain out of GIS data. A digital surface or terrain model
// (any raster GDAL reads) is resampled to square cells in a projected metric system (a
// geographic one is taken to the local UTM zone); building footprints (any vector GDAL reads)
// are rasterised into the building raster, their height field added to the surface. Writes
// PREFIX.map, PREFIX.urb and PREFIX.geo.json, or nothing at all.
#pragma once

#include <ostream>
#include <string>

class TerrainImport {
 public:
  std::string dem, footprints, height_field, out_prefix;
  double cell = 0;  // m; 0 takes the DEM's own spacing
  bool has_bounds = false;
  double xmin = 0, ymin = 0, xmax = 0, ymax = 0;  // in the target system, m

  // False with a one-line reason in error; notes (the system chosen, what was written) go to note.
  bool run(std::string& error, std::ostream& note);
};
