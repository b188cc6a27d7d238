#include "toolkit/polygon.h"

#include <algorithm>

#include "toolkit/error.h"

namespace tk {

namespace {

// Twice the signed area of the triangle a, b, c: > 0 when c is left of a -> b.
double turn(const point& a, const point& b, const point& c) {
  return (b.xcoord() - a.xcoord()) * (c.ycoord() - a.ycoord()) -
         (b.ycoord() - a.ycoord()) * (c.xcoord() - a.xcoord());
}

int sign(double v) { return v > 0 ? 1 : (v < 0 ? -1 : 0); }

// p lies on the closed segment a b, given that it is collinear with it.
bool within(const point& a, const point& b, const point& p) {
  return std::min(a.xcoord(), b.xcoord()) <= p.xcoord() && p.xcoord() <= std::max(a.xcoord(), b.xcoord()) &&
         std::min(a.ycoord(), b.ycoord()) <= p.ycoord() && p.ycoord() <= std::max(a.ycoord(), b.ycoord());
}

bool on_segment(const point& a, const point& b, const point& p) { return turn(a, b, p) == 0 && within(a, b, p); }

// The two closed segments share at least one point.
bool touch(const point& a, const point& b, const point& c, const point& d) {
  int d1 = sign(turn(c, d, a)), d2 = sign(turn(c, d, b));
  int d3 = sign(turn(a, b, c)), d4 = sign(turn(a, b, d));
  if (d1 * d2 < 0 && d3 * d4 < 0) return true;
  return (d1 == 0 && within(c, d, a)) || (d2 == 0 && within(c, d, b)) || (d3 == 0 && within(a, b, c)) ||
         (d4 == 0 && within(a, b, d));
}

// The two segments cross each other properly: each has the other's ends strictly apart.
bool cross(const point& a, const point& b, const point& c, const point& d) {
  return sign(turn(c, d, a)) * sign(turn(c, d, b)) < 0 && sign(turn(a, b, c)) * sign(turn(a, b, d)) < 0;
}

}  // namespace

polygon::polygon() : body(std::make_shared<shape>()) {}

polygon::polygon(const list<point>& vertex_list, int check, bool disregard_orientation) {
  std::shared_ptr<shape> s = std::make_shared<shape>();
  for (const point& p : vertex_list) s->vertices.push_back(p);
  double twice_area = 0.0;
  const std::vector<point>& v = s->vertices;
  for (size_t i = 0; i < v.size(); ++i) {
    const point& a = v[i];
    const point& b = v[(i + 1) % v.size()];
    twice_area += a.xcoord() * b.ycoord() - b.xcoord() * a.ycoord();
  }
  s->orientation = sign(twice_area);
  if (!disregard_orientation && s->orientation < 0) {
    std::reverse(s->vertices.begin(), s->vertices.end());
    s->orientation = 1;
  }
  if (!v.empty()) {
    point* e = s->extreme;
    e[0] = e[1] = e[2] = e[3] = v[0];
    for (const point& p : v) {
      if (p.xcoord() < e[0].xcoord()) e[0] = p;
      if (p.ycoord() < e[1].ycoord()) e[1] = p;
      if (p.xcoord() > e[2].xcoord()) e[2] = p;
      if (p.ycoord() > e[3].ycoord()) e[3] = p;
    }
  }
  body = s;
  if (check == 1 && !is_simple()) error_handler(1, "POLYGON: POLYGON is not simple");
  if (check == 2 && !is_weakly_simple()) error_handler(1, "POLYGON: POLYGON is not weakly simple");
}

list<point> polygon::vertices() const {
  list<point> result;
  for (const point& p : body->vertices) result.append(p);
  return result;
}

double polygon::area() const {
  const std::vector<point>& v = body->vertices;
  double twice_area = 0.0;
  for (size_t i = 0; i < v.size(); ++i) {
    const point& a = v[i];
    const point& b = v[(i + 1) % v.size()];
    twice_area += a.xcoord() * b.ycoord() - b.xcoord() * a.ycoord();
  }
  return twice_area / 2;
}

// Non-adjacent edges must stay apart (or, when touching is allowed, not cross); adjacent
// edges may share only their common vertex.
bool polygon::edges_clear(bool allow_touching) const {
  const std::vector<point>& v = body->vertices;
  size_t n = v.size();
  if (n < 3) return true;
  for (size_t i = 0; i < n; ++i) {
    const point& a = v[i];
    const point& b = v[(i + 1) % n];
    for (size_t j = i + 1; j < n; ++j) {
      const point& c = v[j];
      const point& d = v[(j + 1) % n];
      bool adjacent = (j == i + 1) || (i == 0 && j == n - 1);
      if (adjacent) {
        // The shared vertex is b == c (j = i + 1) or a == d (wrap-around); the edges overlap
        // when the far end of one lies on the other.
        const point& shared = (j == i + 1) ? b : a;
        const point& far_one = (j == i + 1) ? a : b;
        const point& far_two = (j == i + 1) ? d : c;
        if (on_segment(shared, far_two, far_one) || on_segment(shared, far_one, far_two)) {
          if (!allow_touching) return false;
        }
        continue;
      }
      if (allow_touching ? cross(a, b, c, d) : touch(a, b, c, d)) return false;
    }
  }
  return true;
}

bool polygon::is_simple() const { return edges_clear(false); }

bool polygon::is_weakly_simple() const { return edges_clear(true); }

polygon::region polygon::region_of(const point& p) const {
  const std::vector<point>& v = body->vertices;
  if (v.empty()) return unbounded;
  const point* e = body->extreme;
  if (p.xcoord() < e[0].xcoord() || p.xcoord() > e[2].xcoord() || p.ycoord() < e[1].ycoord() ||
      p.ycoord() > e[3].ycoord())
    return unbounded;
  size_t n = v.size();
  bool inside = false;
  for (size_t i = 0, j = n - 1; i < n; j = i++) {
    const point& a = v[j];
    const point& b = v[i];
    if (on_segment(a, b, p)) return boundary;
    if ((a.ycoord() > p.ycoord()) != (b.ycoord() > p.ycoord())) {
      double x = a.xcoord() + (p.ycoord() - a.ycoord()) * (b.xcoord() - a.xcoord()) / (b.ycoord() - a.ycoord());
      if (p.xcoord() < x) inside = !inside;
    }
  }
  return inside ? bounded : unbounded;
}

int polygon::side_of(const point& p) const {
  switch (region_of(p)) {
    case bounded:
      return body->orientation;
    case boundary:
      return 0;
    case unbounded:
      return -body->orientation;
  }
  TK_ASSERT(false, "polygon::side_of: point in no region");
  return 0;
}

}  // namespace tk
