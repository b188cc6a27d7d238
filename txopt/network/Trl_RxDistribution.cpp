#include "network/Trl_RxDistribution.h"

#include <cmath>
#include <iostream>

#include "network/Trl_RandomRegion.h"
#include "raster/Trl_Terrain.h"

void Trl_RxDistribution::place(tk::list<Trl_Rx>& users, int& number, Trl_RandomRegion& region,
                               const Trl_Terrain* terrain, bool streets_only, const Trl_RxTemplate& v) {
  for (int attempt = 0; attempt < (terrain ? 100 : 1); ++attempt) {
    tk::point p = region.draw();
    if (terrain && !terrain->contains(p)) return;  // an off-terrain draw is not retried
    Trl_Rx rx(tk::d3_point(p.xcoord(), p.ycoord(), v.z), number, v.ebno_down, v.ebno_up, v.noise_factor,
              v.max_power, v.min_power, v.gain, v.activity, v.rate_down, v.rate_up, 0);
    if (terrain) {
      rx.set_cell(terrain->height_grid());
      if (streets_only && !terrain->is_open(rx.cell_i, rx.cell_j)) continue;
    }
    users.append(rx);
    ++number;
    return;
  }
}

void Trl_RxDistribution::sample_piece(tk::list<Trl_Rx>& users, int& number, int v, double fraction,
                                      Trl_RandomRegion& region, bool region_on_terrain, const Trl_Terrain* terrain,
                                      bool streets_only, const Trl_RxTemplate& values, bool report) {
  double d = v * fraction;
  if (report) std::cout << "d_samples " << d << "\n";
  tk::random_source& shared = Trl_RandomRegion::distribution_source();
  double u = 0;
  if (d >= 1) {
    int n = static_cast<int>(d);
    region.count = n;
    if (region_on_terrain)
      for (int k = 0; k < n; ++k) place(users, number, region, terrain, streets_only, values);
    shared >> u;
    if (u < d - std::floor(d) && region_on_terrain) place(users, number, region, terrain, streets_only, values);
  } else {
    shared >> u;
    if (u < d && region_on_terrain) {
      region.count = 1;
      place(users, number, region, terrain, streets_only, values);
    }
  }
}
