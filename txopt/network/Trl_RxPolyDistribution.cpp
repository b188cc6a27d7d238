#include "network/Trl_RxPolyDistribution.h"

#include <algorithm>
#include <cfloat>
#include <climits>

#include "network/Trl_DistributionWindow.h"
#include "network/Trl_RandomRegion.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/window.h"

Trl_RxPolyDistribution::Trl_RxPolyDistribution(std::istream& in)
    : low_corner(DBL_MAX, DBL_MAX), high_corner(-DBL_MAX, -DBL_MAX) {
  int count = 0;
  long long sum = 0;
  if (!(in >> count) || count <= 0) return;
  for (int p = 0; p < count; ++p) {
    int m = 0;
    if (!(in >> m) || m < 4) return;
    tk::list<tk::point> vertices;
    for (int k = 0; k < m; ++k) {
      double x, y;
      if (!(in >> x >> y)) return;
      vertices.append(tk::point(x, y));
      low_corner = tk::point(std::min(low_corner.xcoord(), x), std::min(low_corner.ycoord(), y));
      high_corner = tk::point(std::max(high_corner.xcoord(), x), std::max(high_corner.ycoord(), y));
    }
    tk::polygon shape(vertices, 0, true);
    if (!shape.is_simple()) return;
    int v = 0;
    if (!(in >> v) || v < 0) return;
    high = std::max(high, static_cast<unsigned>(v));
    low = std::min(low, static_cast<unsigned>(v));
    // Counts near the int range add up past it: the total stops at the largest int.
    sum += v;
    total = sum < INT_MAX ? static_cast<int>(sum) : INT_MAX;
    polygons.append(shape);
    values.append(v);
  }
  legend = Trl_Legend(false, 14, low, (static_cast<double>(high) - low) / 14.0);
  valid = true;
}

Trl_RxPolyDistribution::~Trl_RxPolyDistribution() { Trl_DistributionWindow::forget(this); }

void Trl_RxPolyDistribution::draw_outline(tk::window& w, int colour) const {
  for (const tk::polygon& p : polygons) w.draw_polygon(p, colour);
}

void Trl_RxPolyDistribution::sample(tk::list<Trl_Rx>& users, const Trl_Terrain* terrain, double fraction,
                                    bool streets_only, const Trl_RxTemplate& template_values) {
  users.clear();
  int number = 0;
  tk::list_item v = values.first();
  for (const tk::polygon& shape : polygons) {
    int count = values[v];
    v = values.succ(v);
    if (count == 0) continue;
    Trl_RandomRegion region(shape, 1);
    bool on_terrain = !terrain || terrain->height_grid().overlaps(region.xmin, region.ymin, region.xmax, region.ymax);
    sample_piece(users, number, count, fraction, region, on_terrain, terrain, streets_only, template_values, false);
  }
}

void Trl_RxPolyDistribution::draw(bool redraw_all, int x0, int y0, int x1, int y1) {
  Trl_DistributionWindow::show_polygons(*this, redraw_all, x0, y0, x1, y1);
}
