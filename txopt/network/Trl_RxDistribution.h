// Trl_RxDistribution: how many mobile users each piece of the plan holds at the busy hour,
// read from a ".drd" file as a raster of counts or as polygons with counts. Mobile users
// are sampled from it with an activation fraction. Reference counted: ref() and unref().
#pragma once

#include "network/Trl_Rx.h"
#include "raster/Trl_Legend.h"
#include "toolkit/list.h"
#include "toolkit/point.h"

class Trl_Terrain;
class Trl_RandomRegion;
namespace tk {
class window;
}

// The radio values every sampled user takes, from the current parameters.
struct Trl_RxTemplate {
  double z;  // m
  double ebno_down, ebno_up, noise_factor, max_power, min_power, gain, activity, rate_down, rate_up;
};

class Trl_RxDistribution {
 public:
  Trl_RxDistribution() : refCount(1), legend(false, 14, 0, 100) {}
  Trl_RxDistribution(const Trl_RxDistribution&) = delete;
  Trl_RxDistribution& operator=(const Trl_RxDistribution&) = delete;

  virtual void ref() { ++refCount; }
  virtual void unref() {
    if (--refCount == 0) delete this;
  }
  virtual ~Trl_RxDistribution() {}
  // Shows the distribution in its own window, all of it or the pixel rectangle given.
  virtual void draw(bool redraw_all, int x0, int y0, int x1, int y1) = 0;
  virtual void draw_outline(tk::window& w, int colour) const = 0;
  // Clears users and fills it with users drawn from the distribution.
  virtual void sample(tk::list<Trl_Rx>& users, const Trl_Terrain* terrain, double fraction, bool streets_only,
                      const Trl_RxTemplate& values) = 0;
  virtual tk::point min_corner() const = 0;
  virtual tk::point max_corner() const = 0;

  int refCount;
  Trl_Legend legend;

 protected:
  // One placement in a region: without terrain a user at a drawn point; with a terrain up to
  // 100 tries for a point on the terrain (and on a street when asked), none when a draw
  // falls off the terrain.
  static void place(tk::list<Trl_Rx>& users, int& number, Trl_RandomRegion& region, const Trl_Terrain* terrain,
                    bool streets_only, const Trl_RxTemplate& values);
  // The placements of one piece of the distribution with v users wanted.
  static void sample_piece(tk::list<Trl_Rx>& users, int& number, int v, double fraction, Trl_RandomRegion& region,
                           bool region_on_terrain, const Trl_Terrain* terrain, bool streets_only,
                           const Trl_RxTemplate& values, bool report);
};
