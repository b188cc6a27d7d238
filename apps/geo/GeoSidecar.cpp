#include "geo/GeoSidecar.h"

#include <cpl_json.h>

std::string GeoSidecar::path_for(const std::string& plan_file) {
  std::string stem = plan_file;
  const size_t slash = stem.find_last_of('/');
  const size_t dot = stem.find_last_of('.');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) stem.erase(dot);
  return stem + ".geo.json";
}

bool GeoSidecar::write(const std::string& path) const {
  CPLJSONDocument doc;
  CPLJSONObject root = doc.GetRoot();
  root.Add("crs_name", name);
  root.Add("crs_wkt", wkt);
  CPLJSONObject shift;
  shift.Add("x0", x0);
  shift.Add("y0", y0);
  root.Add("plan_to_crs", shift);
  root.Add("cell", cell);
  root.Add("columns", columns);
  root.Add("rows", rows);
  return doc.Save(path);
}

bool GeoSidecar::read(const std::string& path, std::string& error) {
  CPLJSONDocument doc;
  if (!doc.Load(path)) {
    error = "cannot read " + path;
    return false;
  }
  const CPLJSONObject root = doc.GetRoot();
  const CPLJSONObject shift = root.GetObj("plan_to_crs");
  wkt = root.GetString("crs_wkt");
  name = root.GetString("crs_name");
  if (wkt.empty() || !shift.IsValid()) {
    error = path + " names no coordinate system";
    return false;
  }
  x0 = shift.GetDouble("x0");
  y0 = shift.GetDouble("y0");
  cell = root.GetDouble("cell");
  columns = root.GetInteger("columns");
  rows = root.GetInteger("rows");
  return true;
}
