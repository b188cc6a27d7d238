// GeoGrid: a north-up grid of square cells in a projected system, the frame into which GIS
// rasters are resampled and vectors rasterised. Its rows run from the north, as GIS rasters
// do; Celvane's rows run from the south.
#pragma once

#include <ogr_spatialref.h>

#include <string>
#include <vector>

class GDALDataset;
class OGRLayer;

class GeoGrid {
 public:
  GeoGrid(const OGRSpatialReference& srs, double xmin, double ymin, double cell, int columns, int rows);

  OGRSpatialReference srs;
  double xmin, ymin, cell;  // m, the south-west corner of the south-west cell
  int columns, rows;

  // GDAL's six numbers of the grid (north-up).
  void geotransform(double gt[6]) const;
  // Band 1 of the raster resampled onto the grid (bilinear), north row first; cells it does
  // not reach hold no_data.
  bool warp(GDALDataset& raster, std::vector<double>& values, std::string& error) const;
  // The layer burnt onto the grid, north row first: 1 where a cell's centre lies in a
  // feature, or the feature's value of `field` when one is named; 0 elsewhere.
  bool rasterise(OGRLayer& layer, const std::string& field, std::vector<double>& values, std::string& error) const;

  static constexpr double no_data = -32768;
};
