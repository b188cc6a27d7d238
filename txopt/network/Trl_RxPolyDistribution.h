// Trl_RxPolyDistribution: polygons of the plan, each with a count of users, read from the
// polygon form of ".drd": the number of polygons, then for each the number of vertices
// (at least 4), the vertices x y, and the count. Polygons are taken as given.
#pragma once

#include <istream>

#include "network/Trl_RxDistribution.h"
#include "toolkit/polygon.h"

class Trl_RxPolyDistribution : public Trl_RxDistribution {
 public:
  explicit Trl_RxPolyDistribution(std::istream& in);
  ~Trl_RxPolyDistribution() override;

  void draw(bool redraw_all, int x0, int y0, int x1, int y1) override;
  void draw_outline(tk::window& w, int colour) const override;
  void sample(tk::list<Trl_Rx>& users, const Trl_Terrain* terrain, double fraction, bool streets_only,
              const Trl_RxTemplate& values) override;
  tk::point min_corner() const override { return low_corner; }
  tk::point max_corner() const override { return high_corner; }

  tk::list<tk::polygon> polygons;
  tk::list<int> values;
  unsigned low = 2147483647u;
  unsigned high = 0;
  int total = 0;
  bool valid = false;
  tk::point low_corner;
  tk::point high_corner;
};
