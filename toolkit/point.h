// tk::point: an immutable position in the plane, coordinates in metres as doubles.
#pragma once

#include <cmath>

namespace tk {

class point {
 public:
  point() : x(0.0), y(0.0) {}
  point(double x_, double y_) : x(x_), y(y_) {}

  double xcoord() const { return x; }
  double ycoord() const { return y; }
  double sqr_dist(const point& q) const { return (x - q.x) * (x - q.x) + (y - q.y) * (y - q.y); }
  double xdist(const point& q) const { return std::fabs(x - q.x); }
  double ydist(const point& q) const { return std::fabs(y - q.y); }
  double distance(const point& q) const { return std::sqrt(sqr_dist(q)); }

  friend bool operator==(const point& a, const point& b) { return a.x == b.x && a.y == b.y; }
  friend bool operator!=(const point& a, const point& b) { return !(a == b); }

 private:
  double x, y;
};

}  // namespace tk
