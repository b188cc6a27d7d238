#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"

TEST(Trl_Rx, DefaultsKeepTheirOwnEbnoOrder) {
  Trl_Rx d;
  EXPECT_EQ(d.number, -1);
  EXPECT_EQ(d.index, -1);
  EXPECT_EQ(d.position.zcoord(), 1.5);
  EXPECT_NEAR(10 * std::log10(d.ebno_down), 5.5, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.ebno_up), 10, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.noise_factor), 9, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.max_power) + 30, 21, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.min_power) + 30, -50, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.gain), -3, 1e-12);
  EXPECT_EQ(d.activity, 0.66);
  EXPECT_EQ(d.rate_down, 12.2);
  EXPECT_EQ(d.rate_up, 12.2);
  EXPECT_EQ(d.bearer, 0);

  Trl_Rx f(tk::d3_point(1, 2, 3), 4, 5, 6, 7, 8, 9, 10, 0.5, 64, 32, 2);
  EXPECT_EQ(f.number, 4);
  EXPECT_EQ(f.index, -1);
  EXPECT_EQ(f.ebno_down, 5);
  EXPECT_EQ(f.ebno_up, 6);
  EXPECT_EQ(f.noise_factor, 7);
  EXPECT_EQ(f.max_power, 8);
  EXPECT_EQ(f.min_power, 9);
  EXPECT_EQ(f.gain, 10);
  EXPECT_EQ(f.activity, 0.5);
  EXPECT_EQ(f.rate_down, 64);
  EXPECT_EQ(f.rate_up, 32);
  EXPECT_EQ(f.bearer, 2);
  EXPECT_EQ(f.cell_i, 0);
  f.set_cell(7, 8);
  EXPECT_EQ(f.cell_i, 7);
  EXPECT_EQ(f.cell_j, 8);
}

TEST(Trl_Rx, TargetsAndNoise) {
  Trl_Rx rx(tk::d3_point(0, 0, 1.5), 0, 4, 2, 3, 0.1, 1e-11, 1, 0.5, 64, 12.2, 0);
  // x * Eb/N0 * rate in bit/s.
  EXPECT_DOUBLE_EQ(rx.required_down(1 / 5e6), 4 * 64000 / 5e6);
  EXPECT_DOUBLE_EQ(rx.required_up(1 / 5e6), 2 * 12200 / 5e6);
  EXPECT_DOUBLE_EQ(rx.noise(-273.18, 5e6), 0);
  EXPECT_DOUBLE_EQ(rx.noise(20, 1e6), 293.18 * 1.380658e-23 * 1e6 * 3);
}

TEST(Trl_Rx, AngularOrderRoundTheReferenceCell) {
  Trl_Tx tx;
  tx.cell_i = 10;
  tx.cell_j = 10;
  Trl_Rx::set_reference(tx);
  Trl_Rx east, north, west, south, far_east;
  east.set_cell(15, 10);
  north.set_cell(10, 12);
  west.set_cell(3, 10);
  south.set_cell(10, 2);
  far_east.set_cell(40, 10);
  EXPECT_EQ(compare_rx_angle(south, east), -1);  // -pi/2 < 0
  EXPECT_EQ(compare_rx_angle(east, north), -1);
  EXPECT_EQ(compare_rx_angle(west, north), 1);   // pi is the largest angle
  EXPECT_EQ(compare_rx_angle(east, far_east), 0);
  tk::list<Trl_Rx> list;
  west.number = 3;
  north.number = 2;
  east.number = 1;
  south.number = 0;
  list.append(west);
  list.append(north);
  list.append(east);
  list.append(south);
  list.sort(compare_rx_angle);
  int k = 0;
  for (const Trl_Rx& rx : list) EXPECT_EQ(rx.number, k++);
  // The reference is shared by the class: moving it changes every comparison.
  tx.cell_i = 20;
  Trl_Rx::set_reference(tx);
  EXPECT_EQ(compare_rx_angle(east, north), 1);
}

namespace {

struct RxRead {
  bool good;
  int ignored;
  tk::list<Trl_Rx> list;
  tk::point low, high;
};

RxRead read_text(const std::string& text) {
  std::istringstream in(text);
  RxRead r;
  Trl_Rx templ(tk::d3_point(0, 0, 1.75), 1, 10, 3.5, 8, 0.2, 1e-11, 0.5, 0.66, 12.2, 12.2, 0);
  r.good = Trl_Rx::read_list(in, templ, nullptr, r.list, r.low, r.high, r.ignored);
  return r;
}

}  // namespace

TEST(Trl_Rx, ReadsUsersWithoutTerrain) {
  RxRead r = read_text("5 1 2\r\n5 3 4\r\n17 -1 9");
  ASSERT_TRUE(r.good);
  EXPECT_EQ(r.ignored, 0);
  ASSERT_EQ(r.list.size(), 3);
  int k = 0;
  for (const Trl_Rx& rx : r.list) {
    EXPECT_EQ(rx.number, k++);           // the file's numbers are overwritten
    EXPECT_EQ(rx.position.zcoord(), 1.75);
    EXPECT_EQ(rx.max_power, 0.2);
    EXPECT_EQ(rx.index, -1);
    EXPECT_EQ(rx.cell_i, 0);
  }
  EXPECT_EQ(r.low.xcoord(), -1);
  EXPECT_EQ(r.high.ycoord(), 9);
  EXPECT_TRUE(read_text("").good);
  EXPECT_TRUE(read_text("1 2 3 4 5").good);   // cut off: dropped
  EXPECT_EQ(read_text("1 2 3 4 5").list.size(), 1);
  EXPECT_FALSE(read_text("1 2 3 4 5 x").good);
  EXPECT_FALSE(read_text("1 2 inf\n").good);
}

TEST(Trl_RandomRegion, PointsStayInTheBoxAndThePolygon) {
  Trl_RandomRegion empty;
  EXPECT_EQ(empty.count, 0);
  EXPECT_FALSE(empty.use_polygon);
  Trl_RandomRegion box(10, 20, 100, 300, 5);  // xmin, xmax, ymin, ymax
  EXPECT_EQ(box.xmin, 10);
  EXPECT_EQ(box.xmax, 20);
  EXPECT_EQ(box.ymin, 100);
  EXPECT_EQ(box.ymax, 300);
  double xs = 0;
  for (int k = 0; k < 2000; ++k) {
    tk::point p = box.draw();
    EXPECT_GE(p.xcoord(), 10);
    EXPECT_LE(p.xcoord(), 20);
    EXPECT_GE(p.ycoord(), 100);
    EXPECT_LE(p.ycoord(), 300);
    xs += p.xcoord();
  }
  EXPECT_NEAR(xs / 2000, 15, 0.5);  // uniform: the mean is the middle
  Trl_RandomRegion corners(tk::point(1, 2), tk::point(3, 4), 7);
  EXPECT_EQ(corners.xmin, 1);
  EXPECT_EQ(corners.ymax, 4);
  EXPECT_EQ(corners.count, 7);

  // A triangle: every point strictly inside it, the box from its extreme vertices.
  tk::list<tk::point> vertices;
  vertices.append(tk::point(0, 0));
  vertices.append(tk::point(100, 0));
  vertices.append(tk::point(0, 100));
  Trl_RandomRegion triangle(tk::polygon(vertices, 0, false), 3);
  EXPECT_TRUE(triangle.use_polygon);
  EXPECT_EQ(triangle.xmin, 0);
  EXPECT_EQ(triangle.xmax, 100);
  EXPECT_EQ(triangle.ymax, 100);
  for (int k = 0; k < 500; ++k) {
    tk::point p = triangle.draw();
    EXPECT_LT(p.xcoord() + p.ycoord(), 100);
  }
}

TEST(Trl_Rx, UniformUsersWithoutTerrain) {
  Trl_RandomRegion region(0, 100, 200, 300, 25);
  Trl_Rx templ(tk::d3_point(0, 0, 2.5), 1, 10, 3.5, 8, 0.2, 1e-11, 0.5, 0.66, 64, 12.2, 0);
  tk::list<Trl_Rx> list;
  list.append(Trl_Rx());  // the generator appends
  Trl_Rx::generate(list, templ, region, true, nullptr);
  ASSERT_EQ(list.size(), 26);
  int k = -1;
  for (const Trl_Rx& rx : list) {
    if (k >= 0) {
      EXPECT_EQ(rx.number, k);
      EXPECT_EQ(rx.position.zcoord(), 2.5);
      EXPECT_EQ(rx.rate_down, 64);
      EXPECT_GE(rx.position.ycoord(), 200);
      EXPECT_LE(rx.position.xcoord(), 100);
    }
    ++k;
  }
}
