// tk::polygon: an immutable simple polygon of points with an inside test. The closing
// vertex is not repeated. Copies share one body. Orientation is +1 anticlockwise, -1
// clockwise, 0 without area.
#pragma once

#include <memory>
#include <vector>

#include "toolkit/list.h"
#include "toolkit/point.h"

namespace tk {

class polygon {
 public:
  polygon();
  // check: 0 none, 1 must be simple, 2 must be weakly simple (may touch, not cross).
  // Unless disregard_orientation, a clockwise polygon is turned round to anticlockwise.
  explicit polygon(const list<point>& vertices, int check = 0, bool disregard_orientation = false);

  list<point> vertices() const;
  int size() const { return static_cast<int>(body->vertices.size()); }
  bool empty() const { return body->vertices.empty(); }
  int orientation() const { return body->orientation; }
  bool is_simple() const;
  bool is_weakly_simple() const;
  // +1 left of the boundary walked in vertex order, 0 on it, -1 right of it.
  int side_of(const point& p) const;

  // The extreme vertices.
  point leftmost() const { return body->extreme[0]; }
  point lowest() const { return body->extreme[1]; }
  point rightmost() const { return body->extreme[2]; }
  point highest() const { return body->extreme[3]; }
  double area() const;

 private:
  struct shape {
    std::vector<point> vertices;
    int orientation = 0;
    point extreme[4];
  };
  enum region { bounded, boundary, unbounded };
  region region_of(const point& p) const;
  bool edges_clear(bool allow_touching) const;

  std::shared_ptr<const shape> body;
};

}  // namespace tk
