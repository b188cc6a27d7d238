// PlanExport: the plan of an imported terrain back in the GIS. Base stations with their
// label and whether the stored assignment uses them, and mobile users with their server and
// powers, as points in one GeoJSON file (WGS 84, as GeoJSON wants it) and optionally a KML
// file for a globe viewer.
#pragma once

#include <ostream>
#include <string>

class PlanExport {
 public:
  std::string like, tx_file, rx_file, report, geojson, kml;

  bool run(std::string& error, std::ostream& note);
};
