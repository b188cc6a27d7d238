// celvane-export plan --like PREFIX.map --tx FILE.dtx [--rx FILE.drx] [--report FILE.dat]
//                     --out PLAN.geojson [--kml PLAN.kml]
// celvane-export coverage --like PREFIX.map --tx FILE.dtx --station LABEL|NUMBER
//                     [--radius CELLS] [--buildings yes|no] --out COVERAGE.tif
// Puts a plan of an imported terrain back into the GIS world through the terrain's sidecar.
// On an error it says why in one line and exits with 1 (2 for a bad command line).
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "geo/CoverageExport.h"
#include "geo/PlanExport.h"

namespace {

int usage() {
  std::cerr << "usage: celvane-export plan --like PREFIX.map --tx FILE.dtx [--rx FILE.drx] [--report FILE.dat] "
               "--out PLAN.geojson [--kml PLAN.kml]\n"
               "       celvane-export coverage --like PREFIX.map --tx FILE.dtx --station LABEL|NUMBER "
               "[--radius CELLS] [--buildings yes|no] --out COVERAGE.tif\n";
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || (argc % 2) != 0) return usage();
  const std::string what = argv[1];
  std::map<std::string, std::string> o;
  for (int i = 2; i + 1 < argc; i += 2) o[argv[i]] = argv[i + 1];
  std::string error;
  bool done = false;
  if (what == "plan") {
    PlanExport job;
    job.like = o["--like"];
    job.tx_file = o["--tx"];
    job.rx_file = o["--rx"];
    job.report = o["--report"];
    job.geojson = o["--out"];
    job.kml = o["--kml"];
    if (job.like.empty() || job.tx_file.empty() || job.geojson.empty()) return usage();
    done = job.run(error, std::cout);
  } else if (what == "coverage") {
    CoverageExport job;
    job.like = o["--like"];
    job.tx_file = o["--tx"];
    job.station = o["--station"];
    job.out = o["--out"];
    if (o.count("--radius")) job.radius = std::atoi(o["--radius"].c_str());
    job.in_buildings = o["--buildings"] != "no";
    if (job.like.empty() || job.tx_file.empty() || job.station.empty() || job.out.empty() || job.radius < 1)
      return usage();
    done = job.run(error, std::cout);
  } else {
    return usage();
  }
  if (!done) {
    std::cerr << "celvane-export: " << error << "\n";
    return 1;
  }
  return 0;
}
