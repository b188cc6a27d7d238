#include "geo/PlanSurface.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "geo/GeoSidecar.h"
#include "planfiles/PlanRasterWriter.h"

PlanSurface::PlanSurface(const GeoGrid& grid)
    : heights(static_cast<size_t>(grid.columns) * grid.rows, 0),
      built(static_cast<size_t>(grid.columns) * grid.rows, 0),
      grid(grid) {}

size_t PlanSurface::plan_index(size_t k) const {
  const size_t row = k / grid.columns, column = k % grid.columns;
  return (grid.rows - 1 - row) * grid.columns + column;
}

bool PlanSurface::take_ground(const std::vector<double>& values, std::string& error) {
  double lowest = HUGE_VAL, highest = -HUGE_VAL;
  for (double v : values)
    if (v != GeoGrid::no_data) {
      lowest = std::min(lowest, v);
      highest = std::max(highest, v);
    }
  if (lowest > highest) {
    error = "the raster has no height inside the bounds";
    return false;
  }
  if (std::lround(lowest) < 0) {
    error = "heights below 0 m (down to " + std::to_string(std::lround(lowest)) +
            " m) cannot be stored: Celvane's height raster starts at 0 m";
    return false;
  }
  if (std::lround(highest) > 32767) {
    error = "heights above 32767 m cannot be stored";
    return false;
  }
  for (size_t k = 0; k < values.size(); ++k) {
    double v = values[k];
    if (v == GeoGrid::no_data) {
      v = lowest;
      ++filled_cells;
    }
    heights[plan_index(k)] = static_cast<short>(std::lround(v));
  }
  return true;
}

bool PlanSurface::add_buildings(const std::string& path, const std::string& height_field, std::string& error) {
  GDALDatasetUniquePtr data(GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR));
  OGRLayer* layer = data ? data->GetLayer(0) : nullptr;
  if (!layer) {
    error = "cannot open " + path + " as footprints";
    return false;
  }
  if (!layer->GetSpatialRef()) {
    error = path + " has no coordinate system";
    return false;
  }
  std::string field = height_field;
  OGRFeatureDefn* fields = layer->GetLayerDefn();
  if (!field.empty() && fields->GetFieldIndex(field.c_str()) < 0) {
    error = path + " has no field \"" + field + "\"";
    return false;
  }
  if (field.empty() && fields->GetFieldIndex("height") >= 0) field = "height";
  std::vector<double> inside, raise;
  if (!grid.rasterise(*layer, "", inside, error)) return false;
  if (!field.empty() && !grid.rasterise(*layer, field, raise, error)) return false;
  for (size_t k = 0; k < inside.size(); ++k) {
    if (inside[k] == 0) continue;
    const size_t at = plan_index(k);
    built[at] = 1;
    if (!raise.empty() && raise[k] > 0) {
      const long top = heights[at] + std::lround(raise[k]);
      if (top > 32767) {
        error = "a building reaches above 32767 m";
        return false;
      }
      heights[at] = static_cast<short>(top);
    }
  }
  return true;
}

// Each file is written beside its final name and renamed only when all three stand.
bool PlanSurface::write(const std::string& prefix, std::string& error) const {
  const PlanRasterWriter writer(grid.columns, grid.rows, 0, 0, grid.cell);
  GeoSidecar sidecar;
  char* wkt = nullptr;
  grid.srs.exportToWkt(&wkt);
  sidecar.wkt = wkt;
  CPLFree(wkt);
  sidecar.name = grid.srs.GetName() ? grid.srs.GetName() : "";
  // The plan's origin is the centre of the south-west cell.
  sidecar.x0 = grid.xmin + 0.5 * grid.cell;
  sidecar.y0 = grid.ymin + 0.5 * grid.cell;
  sidecar.cell = grid.cell;
  sidecar.columns = grid.columns;
  sidecar.rows = grid.rows;
  const std::string names[] = {prefix + ".map", prefix + ".urb", prefix + ".geo.json"};
  const bool written = writer.write_heights(names[0] + ".part", heights) &&
                       writer.write_clutter(names[1] + ".part", built) && sidecar.write(names[2] + ".part");
  for (const std::string& name : names) {
    if (!written) {
      std::remove((name + ".part").c_str());
    } else if (std::rename((name + ".part").c_str(), name.c_str()) != 0) {
      error = "cannot write " + name;
    }
  }
  if (!written) error = "cannot write " + prefix + ".map, .urb and .geo.json";
  return error.empty();
}
