// GeoSidecar: the "PREFIX.geo.json" file beside an imported plan. It names the projected
// coordinate system (WKT, metres) the plan was cut from and the shift from Celvane's plan
// coordinates to it: X = x + x0, Y = y + y0. With it, results go back to the GIS.
#pragma once

#include <string>

class GeoSidecar {
 public:
  std::string wkt;       // the projected coordinate system
  std::string name;      // its name, for messages
  double x0 = 0, y0 = 0; // m, where the plan's origin lies in that system
  double cell = 0;       // m, the rasters' spacing
  int columns = 0, rows = 0;

  // The sidecar of a plan file: "PREFIX.map" and "PREFIX" both give "PREFIX.geo.json".
  static std::string path_for(const std::string& plan_file);
  bool write(const std::string& path) const;
  // False with a one-line reason when the file is missing or incomplete.
  bool read(const std::string& path, std::string& error);
};
