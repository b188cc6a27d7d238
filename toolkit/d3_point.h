// tk::d3_point: an immutable position in space; its only use is where a base station or a
// mobile user stands, x and y in the plane and z the height, in metres.
#pragma once

#include "toolkit/point.h"

namespace tk {

class d3_point {
 public:
  d3_point() : x(0.0), y(0.0), z(0.0) {}
  d3_point(double x_, double y_, double z_) : x(x_), y(y_), z(z_) {}

  double xcoord() const { return x; }
  double ycoord() const { return y; }
  double zcoord() const { return z; }
  point to_point() const { return point(x, y); }

  friend bool operator==(const d3_point& a, const d3_point& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }
  friend bool operator!=(const d3_point& a, const d3_point& b) { return !(a == b); }

 private:
  double x, y, z;
};

}  // namespace tk
