#include "geo/SiteImport.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "geo/GeoSidecar.h"

namespace {

bool number(const char* text, double& value) {
  char* end = nullptr;
  errno = 0;
  value = std::strtod(text, &end);
  return end != text && *end == '\0' && errno == 0 && std::isfinite(value);
}

}  // namespace

bool SiteImport::run(std::string& error, std::ostream& note) {
  GDALAllRegister();
  GeoSidecar plan;
  if (!plan.read(GeoSidecar::path_for(like), error)) return false;
  GDALDatasetUniquePtr data(GDALDataset::Open(table.c_str(), GDAL_OF_VECTOR));
  OGRLayer* layer = data ? data->GetLayer(0) : nullptr;
  if (!layer) {
    error = "cannot open " + table + " as a table";
    return false;
  }
  OGRFeatureDefn* fields = layer->GetLayerDefn();
  for (const std::string& column : {x_column, y_column, label_column})
    if (!column.empty() && fields->GetFieldIndex(column.c_str()) < 0) {
      error = table + " has no column \"" + column + "\"";
      return false;
    }
  OGRSpatialReference to, from;
  to.importFromWkt(plan.wkt.c_str());
  if (epsg != 0 && from.importFromEPSG(epsg) != OGRERR_NONE) {
    error = "EPSG:" + std::to_string(epsg) + " is not a coordinate system GDAL knows";
    return false;
  }
  if (epsg == 0) from = to;
  to.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  from.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::unique_ptr<OGRCoordinateTransformation> into(OGRCreateCoordinateTransformation(&from, &to));
  if (!into) {
    error = "cannot take EPSG:" + std::to_string(epsg) + " into " + plan.name;
    return false;
  }
  const std::string part = out + ".part";
  std::ofstream file(part);
  int row = 0;
  for (auto& feature : *layer) {
    ++row;
    double x, y, label = row - 1;
    if (!number(feature->GetFieldAsString(x_column.c_str()), x) ||
        !number(feature->GetFieldAsString(y_column.c_str()), y) ||
        (!label_column.empty() && !number(feature->GetFieldAsString(label_column.c_str()), label))) {
      error = table + ", row " + std::to_string(row) + ": a coordinate or label is not a number";
      break;
    }
    if (!into->Transform(1, &x, &y)) {
      error = table + ", row " + std::to_string(row) + ": cannot take the point into " + plan.name;
      break;
    }
    char line[96];
    std::snprintf(line, sizeof line, "%ld %.10g %.10g\n", std::lround(label), x - plan.x0, y - plan.y0);
    file << line;
  }
  file.close();
  if (error.empty() && (!file || !plan.write(GeoSidecar::path_for(out) + ".part")))
    error = "cannot write " + out;
  if (!error.empty() || std::rename(part.c_str(), out.c_str()) != 0 ||
      std::rename((GeoSidecar::path_for(out) + ".part").c_str(), GeoSidecar::path_for(out).c_str()) != 0) {
    std::remove(part.c_str());
    std::remove((GeoSidecar::path_for(out) + ".part").c_str());
    if (error.empty()) error = "cannot write " + out;
    return false;
  }
  note << "celvane-import: wrote " << row << " sites to " << out << "\n";
  return true;
}
