#include "network/Trl_RandomRegion.h"

Trl_RandomRegion::Trl_RandomRegion()
    : use_polygon(false), xmin(0), ymin(0), xmax(0), ymax(0), count(0) {}

Trl_RandomRegion::Trl_RandomRegion(double xmin, double xmax, double ymin, double ymax, int count)
    : use_polygon(false), xmin(xmin), ymin(ymin), xmax(xmax), ymax(ymax), count(count) {}

Trl_RandomRegion::Trl_RandomRegion(const tk::point& corner1, const tk::point& corner2, int count)
    : use_polygon(false),
      xmin(corner1.xcoord()),
      ymin(corner1.ycoord()),
      xmax(corner2.xcoord()),
      ymax(corner2.ycoord()),
      count(count) {}

Trl_RandomRegion::Trl_RandomRegion(const tk::polygon& polygon, int count)
    : polygon(polygon), use_polygon(true), count(count) {
  // The extreme vertices come leftmost, lowest, rightmost, highest.
  xmin = polygon.leftmost().xcoord();
  ymin = polygon.lowest().ycoord();
  xmax = polygon.rightmost().xcoord();
  ymax = polygon.highest().ycoord();
}

tk::point Trl_RandomRegion::draw() {
  for (;;) {
    double u, v;
    x_source >> u;
    y_source >> v;
    const tk::point p(xmin + (xmax - xmin) * u, ymin + (ymax - ymin) * v);
    if (!use_polygon || polygon.side_of(p) == 1) return p;
  }
}

tk::random_source& Trl_RandomRegion::distribution_source() {
  static tk::random_source source;
  return source;
}

tk::random_source& Trl_RandomRegion::traffic_source() {
  static tk::random_source source;
  return source;
}

tk::random_source& Trl_RandomRegion::application_source() {
  static tk::random_source source;
  return source;
}
