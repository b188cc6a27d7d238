// celvane-citygen --out DIR [--seed N] [--cells N] [--cell METRES] [--stations N] [--users N]
//                 [--layout random|grid]
// Writes a synthetic city as DIR/terrain.map and DIR/terrain.urb, with base stations in
// DIR/bs.dtx, mobile users in DIR/mu.drx, and user densities in DIR/mu_dis.drd (grid form)
// and DIR/mu_dis_polygons.drd (polygon form), and the IMT-2000 traffic in DIR/Entrada.ent and
// DIR/Datos.ent. The layout "grid" puts the base stations on a square lattice over the city
// (the benchmarks' large city), "random" (the default) anywhere.
#include <cstdlib>
#include <iostream>
#include <string>

#include "citygen/CityGenerator.h"

int main(int argc, char** argv) {
  std::string out;
  unsigned seed = 1;
  int cells = 500, stations = 40, users = 400;
  double cell = 2.0;
  std::string layout = "random";
  for (int i = 1; i + 1 < argc; i += 2) {
    std::string arg = argv[i];
    if (arg == "--out") out = argv[i + 1];
    else if (arg == "--seed") seed = static_cast<unsigned>(std::atol(argv[i + 1]));
    else if (arg == "--cells") cells = std::atoi(argv[i + 1]);
    else if (arg == "--cell") cell = std::atof(argv[i + 1]);
    else if (arg == "--stations") stations = std::atoi(argv[i + 1]);
    else if (arg == "--users") users = std::atoi(argv[i + 1]);
    else if (arg == "--layout") layout = argv[i + 1];
    else {
      std::cerr << "unknown option " << arg << "\n";
      return 2;
    }
  }
  if (out.empty() || cells < 2 || cells > 20000 || cell <= 0 ||
      (layout != "random" && layout != "grid")) {
    std::cerr << "usage: celvane-citygen --out DIR [--seed N] [--cells N] [--cell METRES] [--stations N] [--users N]"
                 " [--layout random|grid]\n";
    return 2;
  }
  CityGenerator city(cells, cell, seed);
  bool ok = city.write_heights(out + "/terrain.map") && city.write_clutter(out + "/terrain.urb") &&
            (layout == "grid" ? city.write_base_stations_on_grid(out + "/bs.dtx", stations)
                             : city.write_base_stations(out + "/bs.dtx", stations)) && city.write_users(out + "/mu.drx", users) &&
            city.write_grid_distribution(out + "/mu_dis.drd") &&
            city.write_polygon_distribution(out + "/mu_dis_polygons.drd") &&
            city.write_imt2000_traffic(out + "/Entrada.ent") && city.write_imt2000_users(out + "/Datos.ent");
  if (!ok) {
    std::cerr << "celvane-citygen: cannot write into " << out << "\n";
    return 1;
  }
  return 0;
}
