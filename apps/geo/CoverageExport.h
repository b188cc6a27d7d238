// CoverageExport: the path loss map round one base station of an imported plan, computed as
// "Draw pathloss coverage" computes it (the planner's default parameters, the radius given),
// written as a GeoTIFF in the terrain's system; cells not computed hold the no-data value 0.
#pragma once

#include <ostream>
#include <string>

class CoverageExport {
 public:
  std::string like, tx_file, station, out;  // station: a label ("BS0007") or a list position
  int radius = 150;                         // cells
  bool in_buildings = true;

  bool run(std::string& error, std::ostream& note);
};
