#include <gtest/gtest.h>

#include <vector>

#include "support/ErrorGuard.h"
#include "toolkit/d3_point.h"
#include "toolkit/point.h"
#include "toolkit/polygon.h"

namespace {

tk::list<tk::point> points(std::initializer_list<std::pair<double, double>> xy) {
  tk::list<tk::point> l;
  for (auto& p : xy) l.append(tk::point(p.first, p.second));
  return l;
}

TEST(Point, Distances) {
  tk::point p(1, 2), q(4, 6);
  EXPECT_EQ(p.sqr_dist(q), 25.0);
  EXPECT_EQ(p.distance(q), 5.0);
  EXPECT_EQ(p.xdist(q), 3.0);
  EXPECT_EQ(q.ydist(p), 4.0);
  EXPECT_EQ(p.distance(p), 0.0);
  tk::d3_point d(1, 2, 3);
  EXPECT_EQ(d.to_point(), p);
  EXPECT_EQ(d.zcoord(), 3.0);
}

TEST(Polygon, SideOfAnAnticlockwiseSquare) {
  tk::polygon square(points({{0, 0}, {1, 0}, {1, 1}, {0, 1}}), 0, true);
  EXPECT_EQ(square.orientation(), 1);
  EXPECT_EQ(square.side_of(tk::point(0.5, 0.5)), 1);
  EXPECT_EQ(square.side_of(tk::point(0, 0)), 0);
  EXPECT_EQ(square.side_of(tk::point(1, 0.5)), 0);
  EXPECT_EQ(square.side_of(tk::point(2, 2)), -1);
  EXPECT_EQ(square.side_of(tk::point(0.5, 1.5)), -1);
}

TEST(Polygon, ClockwiseSquareKeptOrTurned) {
  tk::list<tk::point> clockwise = points({{0, 0}, {0, 1}, {1, 1}, {1, 0}});
  tk::polygon kept(clockwise, 0, true);
  EXPECT_EQ(kept.orientation(), -1);
  EXPECT_EQ(kept.side_of(tk::point(0.5, 0.5)), -1);
  EXPECT_EQ(kept.side_of(tk::point(2, 2)), 1);

  tk::polygon turned(clockwise, 0, false);
  EXPECT_EQ(turned.orientation(), 1);
  EXPECT_EQ(turned.side_of(tk::point(0.5, 0.5)), 1);
  std::vector<tk::point> v;
  for (const tk::point& p : turned.vertices()) v.push_back(p);
  std::vector<tk::point> expected = {tk::point(1, 0), tk::point(1, 1), tk::point(0, 1), tk::point(0, 0)};
  EXPECT_EQ(v, expected);
}

TEST(Polygon, FigureOfEightIsNeitherSimpleNorWeaklySimple) {
  tk::list<tk::point> eight = points({{0, 0}, {1, 1}, {1, 0}, {0, 1}});
  tk::polygon p(eight, 0, true);
  EXPECT_FALSE(p.is_simple());
  EXPECT_FALSE(p.is_weakly_simple());
  EXPECT_TK_ERROR(tk::polygon(eight, 1, false), 1, "POLYGON: POLYGON is not simple");
  EXPECT_TK_ERROR(tk::polygon(eight, 2, false), 1, "POLYGON: POLYGON is not weakly simple");
}

TEST(Polygon, TouchingIsWeaklySimpleButNotSimple) {
  // A bow tie whose two loops meet in one vertex (2, 1) without crossing.
  tk::list<tk::point> bow = points({{0, 0}, {2, 1}, {4, 0}, {4, 2}, {2, 1}, {0, 2}});
  tk::polygon p(bow, 0, true);
  EXPECT_FALSE(p.is_simple());
  EXPECT_TRUE(p.is_weakly_simple());
  tk::polygon l_shape(points({{0, 0}, {2, 0}, {2, 1}, {1, 1}, {1, 2}, {0, 2}}), 1, false);
  EXPECT_TRUE(l_shape.is_simple());
  EXPECT_EQ(l_shape.side_of(tk::point(1.5, 1.5)), -1);  // the notch is outside
  EXPECT_EQ(l_shape.side_of(tk::point(0.5, 1.5)), 1);
  EXPECT_EQ(l_shape.leftmost().xcoord(), 0.0);
  EXPECT_EQ(l_shape.highest().ycoord(), 2.0);
}

TEST(Polygon, CopiesShareAndDefaultIsEmpty) {
  tk::polygon empty;
  EXPECT_EQ(empty.size(), 0);
  EXPECT_EQ(empty.side_of(tk::point(0, 0)), 0);  // no area, no orientation
  tk::polygon a(points({{0, 0}, {1, 0}, {0, 1}}));
  tk::polygon b = a;
  a = tk::polygon();
  EXPECT_EQ(b.size(), 3);
  EXPECT_EQ(a.size(), 0);
}

}  // namespace
