// SiteImport: base stations (".dtx") or mobile users (".drx") from a table of sites (CSV or
// any table GDAL reads), their coordinates taken into the plan of an imported terrain
// through its sidecar. Writes FILE and FILE's sidecar, or nothing at all.
#pragma once

#include <ostream>
#include <string>

class SiteImport {
 public:
  std::string table, x_column = "x", y_column = "y", label_column, like, out;
  int epsg = 0;  // the system of the table's coordinates; 0: the terrain's own

  bool run(std::string& error, std::ostream& note);
};
