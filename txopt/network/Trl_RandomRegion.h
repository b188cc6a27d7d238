// A rectangle (m) or a polygon, with a count of points to draw, from which uniform random
// points are drawn: random base stations, uniform mobile users, users of a distribution.
// Holds its own two random sources, one for x and one for y.
// Also home of the three random sources that live for the whole program.
#pragma once

#include "toolkit/point.h"
#include "toolkit/polygon.h"
#include "toolkit/random_source.h"

class Trl_RandomRegion {
 public:
  tk::polygon polygon;    // empty unless the region is a polygon
  bool use_polygon;
  double xmin, ymin, xmax, ymax;  // m
  int count;              // how many points the user of the region is to draw
  tk::random_source x_source;
  tk::random_source y_source;

  Trl_RandomRegion();
  Trl_RandomRegion(double xmin, double xmax, double ymin, double ymax, int count);
  Trl_RandomRegion(const tk::point& corner1, const tk::point& corner2, int count);
  // The box is taken from the polygon's four extreme vertices.
  Trl_RandomRegion(const tk::polygon& polygon, int count);

  // A uniform point of the box; for a polygon only one strictly inside it, drawn again
  // without limit (a polygon of no area never returns).
  tk::point draw();

  // The program's long-lived sources, each made on first use and kept to the end:
  // the one shared by the placements of a user distribution,
  static tk::random_source& distribution_source();
  // the IMT-2000 traffic generator's own,
  static tk::random_source& traffic_source();
  // and the application's own (indoor or outdoor without a terrain).
  static tk::random_source& application_source();
};
