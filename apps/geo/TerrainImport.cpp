#include "geo/TerrainImport.h"

#include <gdal_alg.h>
#include <gdal_priv.h>
#include <gdal_utils.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vector>

#include "geo/GeoGrid.h"
#include "geo/PlanSurface.h"
#include "geo/GeoSidecar.h"
#include "planfiles/PlanRasterWriter.h"

namespace {

// The largest terrain written in one piece: 2^28 cells, a height raster of 512 MB.
const double max_total_cells = 268435456.0;

struct Extent {
  double xmin = HUGE_VAL, ymin = HUGE_VAL, xmax = -HUGE_VAL, ymax = -HUGE_VAL;
  void take(double x, double y) {
    xmin = std::min(xmin, x);
    xmax = std::max(xmax, x);
    ymin = std::min(ymin, y);
    ymax = std::max(ymax, y);
  }
};

// The DEM's footprint in the target system, from points along its four edges.
bool dem_extent(GDALDataset& dem, const OGRSpatialReference& source, const OGRSpatialReference& target, Extent& e) {
  double gt[6];
  if (dem.GetGeoTransform(gt) != CE_None) return false;
  std::unique_ptr<OGRCoordinateTransformation> to(OGRCreateCoordinateTransformation(&source, &target));
  if (!to) return false;
  const int w = dem.GetRasterXSize(), h = dem.GetRasterYSize(), steps = 20;
  for (int k = 0; k <= steps; ++k)
    for (int edge = 0; edge < 4; ++edge) {
      const double t = static_cast<double>(k) / steps;
      const double px = edge == 0 ? t * w : edge == 1 ? w : edge == 2 ? (1 - t) * w : 0;
      const double py = edge == 0 ? 0 : edge == 1 ? t * h : edge == 2 ? h : (1 - t) * h;
      double x = gt[0] + px * gt[1] + py * gt[2], y = gt[3] + px * gt[4] + py * gt[5];
      if (to->Transform(1, &x, &y)) e.take(x, y);
    }
  return e.xmin < e.xmax && e.ymin < e.ymax;
}

// The system the plan is cut in: the DEM's own when it is projected in metres, otherwise the
// UTM zone of the DEM's centre.
bool choose_target(GDALDataset& dem, const OGRSpatialReference& source, OGRSpatialReference& target,
                   std::string& reprojected) {
  if (source.IsProjected() && std::fabs(source.GetLinearUnits() - 1.0) < 1e-12) {
    target = source;
    return true;
  }
  double gt[6];
  if (dem.GetGeoTransform(gt) != CE_None) return false;
  OGRSpatialReference wgs84;
  wgs84.importFromEPSG(4326);
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::unique_ptr<OGRCoordinateTransformation> to(OGRCreateCoordinateTransformation(&source, &wgs84));
  double lon = gt[0] + gt[1] * dem.GetRasterXSize() / 2 + gt[2] * dem.GetRasterYSize() / 2;
  double lat = gt[3] + gt[4] * dem.GetRasterXSize() / 2 + gt[5] * dem.GetRasterYSize() / 2;
  if (!to || !to->Transform(1, &lon, &lat)) return false;
  const int zone = std::clamp(static_cast<int>(std::floor((lon + 180) / 6)) + 1, 1, 60);
  const int epsg = (lat >= 0 ? 32600 : 32700) + zone;
  if (target.importFromEPSG(epsg) != OGRERR_NONE) return false;
  reprojected = std::string(target.GetName()) + " (EPSG:" + std::to_string(epsg) + ")";
  return true;
}

}  // namespace

bool TerrainImport::run(std::string& error, std::ostream& note) {
  GDALAllRegister();
  const auto fail = [&error](const std::string& why) {
    error = why;
    return false;
  };
  GDALDatasetUniquePtr source(GDALDataset::Open(dem.c_str(), GDAL_OF_RASTER));
  if (!source) return fail("cannot open " + dem + " as a raster");
  const OGRSpatialReference* source_srs = source->GetSpatialRef();
  if (!source_srs || source_srs->IsEmpty()) return fail(dem + " has no coordinate system");
  OGRSpatialReference from(*source_srs), target;
  from.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::string reprojected;
  if (!choose_target(*source, from, target, reprojected)) return fail("cannot find a metric system for " + dem);
  target.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  if (!reprojected.empty()) note << "celvane-import: " << dem << " is taken to " << reprojected << "\n";

  Extent covered;
  if (!dem_extent(*source, from, target, covered)) return fail("cannot place " + dem + " in " + target.GetName());
  Extent wanted = covered;
  if (has_bounds) {
    if (!(xmin < xmax && ymin < ymax)) return fail("the bounds must run from the lower to the upper corner");
    if (xmax <= covered.xmin || xmin >= covered.xmax || ymax <= covered.ymin || ymin >= covered.ymax)
      return fail("the bounds do not overlap " + dem);
    wanted = {xmin, ymin, xmax, ymax};
  }
  const double spacing = cell > 0 ? cell : (covered.xmax - covered.xmin) / source->GetRasterXSize();
  const double columns = std::floor((wanted.xmax - wanted.xmin) / spacing + 0.5);
  const double rows = std::floor((wanted.ymax - wanted.ymin) / spacing + 0.5);
  if (columns < 2 || rows < 2) return fail("fewer than 2 by 2 cells of " + std::to_string(spacing) + " m");
  if (columns > PlanRasterWriter::max_cells || rows > PlanRasterWriter::max_cells || columns * rows > max_total_cells) {
    char why[160];
    std::snprintf(why, sizeof why, "%.0f by %.0f cells: Celvane's rasters hold at most 65535 cells a side and %.0f cells",
                  columns, rows, max_total_cells);
    return fail(why);
  }
  GeoGrid grid(target, wanted.xmin, wanted.ymin, spacing, static_cast<int>(columns), static_cast<int>(rows));

  std::vector<double> ground;
  if (!grid.warp(*source, ground, error)) return false;
  PlanSurface surface(grid);
  if (!surface.take_ground(ground, error)) return false;
  if (!footprints.empty() && !surface.add_buildings(footprints, height_field, error)) return false;
  if (surface.filled_cells > 0)
    note << "celvane-import: " << surface.filled_cells << " cells outside " << dem << " take its lowest height\n";
  if (!surface.write(out_prefix, error)) return false;
  note << "celvane-import: wrote " << out_prefix << ".map and " << out_prefix << ".urb, " << grid.columns << " by "
       << grid.rows << " cells of " << spacing << " m in " << target.GetName() << "\n";
  return true;
}
