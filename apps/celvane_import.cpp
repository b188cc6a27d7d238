// celvane-import terrain --dem DEM [--buildings FOOTPRINTS] [--height-field NAME]
//                        [--cell METRES] [--bounds XMIN YMIN XMAX YMAX] --out PREFIX
// celvane-import sites|users --csv TABLE [--x COL] [--y COL] [--label COL] [--crs EPSG]
//                        --like PREFIX.map --out FILE
// Makes Celvane plan files from GIS data; each output has a PREFIX.geo.json beside it. On
// an error it says why in one line, writes nothing and exits with 1 (2 for a bad command line).
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>
#include <vector>

#include "geo/SiteImport.h"
#include "geo/TerrainImport.h"

namespace {

int usage() {
  std::cerr << "usage: celvane-import terrain --dem DEM [--buildings FOOTPRINTS] [--height-field NAME] "
               "[--cell METRES] [--bounds XMIN YMIN XMAX YMAX] --out PREFIX\n"
               "       celvane-import sites|users --csv TABLE [--x COL] [--y COL] [--label COL] [--crs EPSG] "
               "--like PREFIX.map --out FILE\n";
  return 2;
}

// Options with their values; --bounds takes four.
bool parse(int argc, char** argv, std::map<std::string, std::vector<std::string>>& options) {
  for (int i = 2; i < argc; ++i) {
    const std::string name = argv[i];
    const int values = name == "--bounds" ? 4 : 1;
    if (name.rfind("--", 0) != 0 || i + values > argc - 1) return false;
    for (int k = 1; k <= values; ++k) options[name].push_back(argv[i + k]);
    i += values;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return usage();
  const std::string what = argv[1];
  std::map<std::string, std::vector<std::string>> o;
  if (!parse(argc, argv, o)) return usage();
  auto value = [&o](const char* name) { return o.count(name) ? o[name][0] : std::string(); };
  std::string error;
  bool done = false;
  if (what == "terrain") {
    TerrainImport job;
    job.dem = value("--dem");
    job.footprints = value("--buildings");
    job.height_field = value("--height-field");
    job.out_prefix = value("--out");
    if (job.dem.empty() || job.out_prefix.empty()) return usage();
    if (o.count("--cell")) job.cell = std::atof(value("--cell").c_str());
    if (o.count("--bounds")) {
      job.has_bounds = true;
      job.xmin = std::atof(o["--bounds"][0].c_str());
      job.ymin = std::atof(o["--bounds"][1].c_str());
      job.xmax = std::atof(o["--bounds"][2].c_str());
      job.ymax = std::atof(o["--bounds"][3].c_str());
    }
    done = job.run(error, std::cout);
  } else if (what == "sites" || what == "users") {
    SiteImport job;
    job.table = value("--csv");
    job.like = value("--like");
    job.out = value("--out");
    if (job.table.empty() || job.like.empty() || job.out.empty()) return usage();
    if (o.count("--x")) job.x_column = value("--x");
    if (o.count("--y")) job.y_column = value("--y");
    job.label_column = value("--label");
    if (o.count("--crs")) job.epsg = std::atoi(value("--crs").c_str());
    done = job.run(error, std::cout);
  } else {
    return usage();
  }
  if (!done) {
    std::cerr << "celvane-import: " << error << "\n";
    return 1;
  }
  return 0;
}
