#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <sstream>
#include <vector>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_RxGridDistribution.h"
#include "network/Trl_RxPolyDistribution.h"
#include "toolkit/random_source.h"

namespace {

Trl_RxTemplate values() { return Trl_RxTemplate{1.5, 10, 3.5, 8, 0.125, 1e-8, 0.5, 0.66, 12.2, 12.2}; }

Trl_RxGridDistribution* grid(const std::string& text) {
  std::istringstream in(text);
  return new Trl_RxGridDistribution(in);
}
Trl_RxPolyDistribution* polygons(const std::string& text) {
  std::istringstream in(text);
  return new Trl_RxPolyDistribution(in);
}

const char* three_by_two =
    "ncols 3 nrows 2 xllcorner 100 yllcorner 200 cellsize 10 NODATA_value -9999\n"
    "1 2 3\n"    // the southern row, y = 200
    "40 0 6\n";  // the northern row, y = 210

TEST(GridDistribution, ReadsTheSouthernRowFirst) {
  Trl_RxGridDistribution* d = grid(three_by_two);
  ASSERT_TRUE(d->valid);
  EXPECT_EQ(d->matrix->get(0, 0), 1);
  EXPECT_EQ(d->matrix->get(2, 0), 3);
  EXPECT_EQ(d->matrix->get(0, 1), 40);
  EXPECT_EQ(d->total, 52);
  EXPECT_EQ(d->low, 0);
  EXPECT_EQ(d->high, 40);
  EXPECT_EQ(d->min_corner(), tk::point(95, 195));
  EXPECT_EQ(d->max_corner(), tk::point(125, 215));
  d->unref();
}

TEST(GridDistribution, RefusesBadFiles) {
  auto valid = [](const std::string& text) {
    Trl_RxGridDistribution* d = grid(text);
    bool ok = d->valid;
    d->unref();
    return ok;
  };
  EXPECT_TRUE(valid("ncols 2 nrows 2 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2 3 4"));
  EXPECT_FALSE(valid("NCOLS 2 nrows 2 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2 3 4"));
  EXPECT_FALSE(valid("ncols 2 nrows 1 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2"));
  EXPECT_FALSE(valid("ncols 2 nrows 2 xllcorner 0 yllcorner 0 cellsize 0 NODATA_value 0 1 2 3 4"));
  EXPECT_FALSE(valid("ncols 2 nrows 2 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2 3"));  // one short
  EXPECT_FALSE(valid("ncols 2 nrows 2 yllcorner 0 xllcorner 0 cellsize 1 NODATA_value 0 1 2 3 4"));
  EXPECT_FALSE(valid(""));
  // A header that promises more cells than the file holds is refused without making them.
  EXPECT_FALSE(valid("ncols 65535 nrows 65535 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2 3"));
}

TEST(GridDistribution, ACountBeyondSixteenBitsFailsTheRead) {
  const struct {
    const char* count;
    bool valid;
  } cases[] = {{"65535", true}, {"65536", false}, {"65636", false}, {"70000", false}, {"-1", false}};
  for (const auto& c : cases) {
    Trl_RxGridDistribution* d =
        grid(std::string("ncols 2 nrows 2 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0 1 2 3 ") + c.count);
    EXPECT_EQ(d->valid, c.valid) << c.count;
    if (d->valid) EXPECT_EQ(d->high, 65535);
    d->unref();
  }
}

TEST(Distributions, TotalsPastTheIntRangeStopAtTheLargestInt) {
  std::string text = "ncols 200 nrows 200 xllcorner 0 yllcorner 0 cellsize 1 NODATA_value 0\n";
  for (int k = 0; k < 200 * 200; ++k) text += "65535 ";
  Trl_RxGridDistribution* g = grid(text);
  ASSERT_TRUE(g->valid);
  EXPECT_EQ(g->total, 2147483647);
  g->unref();
  Trl_RxPolyDistribution* p =
      polygons("2 4 0 0 10 0 10 10 0 10 2147483647 4 20 0 30 0 30 10 20 10 2147483647");
  ASSERT_TRUE(p->valid);
  EXPECT_EQ(p->total, 2147483647);
  p->unref();
}

TEST(GridDistribution, SamplingPutsUsersInTheirCellsAtTheirShare) {
  tk::random_source::fix_seed(11);
  Trl_RxGridDistribution* d = grid(three_by_two);
  tk::list<Trl_Rx> users;
  testing::internal::CaptureStdout();
  d->sample(users, nullptr, 1.0, false, values());
  std::string said = testing::internal::GetCapturedStdout();
  // A fraction of 1 gives exactly the counts; the empty cell prints nothing.
  EXPECT_EQ(users.size(), 52);
  EXPECT_EQ(said, "d_samples 1\nd_samples 2\nd_samples 3\nd_samples 40\nd_samples 6\n");
  std::vector<int> per_cell(6, 0);
  int expected_number = 0;
  for (const Trl_Rx& rx : users) {
    EXPECT_EQ(rx.number, expected_number++);
    EXPECT_EQ(rx.position.zcoord(), 1.5);
    double x = rx.position.xcoord(), y = rx.position.ycoord();
    ASSERT_GE(x, 95);
    ASSERT_LE(x, 125);
    ASSERT_GE(y, 195);
    ASSERT_LE(y, 215);
    int i = static_cast<int>((x - 95) / 10), j = static_cast<int>((y - 195) / 10);
    per_cell[std::min(j, 1) * 3 + std::min(i, 2)]++;
  }
  EXPECT_EQ(per_cell, (std::vector<int>{1, 2, 3, 40, 0, 6}));

  // Over many draws at 0.1 % the share of the busy north-west cell stays near 40 / 52; a
  // flipped row order would put it near 1 / 52.
  tk::list<Trl_Rx> some;
  int north_west = 0, all = 0;
  for (int k = 0; k < 200; ++k) {
    testing::internal::CaptureStdout();
    d->sample(some, nullptr, 0.05, false, values());
    testing::internal::GetCapturedStdout();
    for (const Trl_Rx& rx : some) {
      ++all;
      if (rx.position.xcoord() < 105 && rx.position.ycoord() > 205) ++north_west;
    }
  }
  ASSERT_GT(all, 300);
  EXPECT_NEAR(static_cast<double>(north_west) / all, 40.0 / 52, 0.06);
  tk::random_source::release_seed();
  d->unref();
}

TEST(PolyDistribution, ReadsPolygonsAndRefusesBadOnes) {
  Trl_RxPolyDistribution* d = polygons(
      "2\n"
      "4  0 0  10 0  10 10  0 10  7\n"
      "5  20 0  30 0  30 10  25 15  20 10  0\n");
  ASSERT_TRUE(d->valid);
  EXPECT_EQ(d->polygons.size(), 2);
  EXPECT_EQ(d->total, 7);
  EXPECT_EQ(d->low, 0u);
  EXPECT_EQ(d->high, 7u);
  EXPECT_EQ(d->min_corner(), tk::point(0, 0));
  EXPECT_EQ(d->max_corner(), tk::point(30, 15));
  EXPECT_EQ(d->legend.lowest, 0.0);
  d->unref();
  auto valid = [](const std::string& text) {
    Trl_RxPolyDistribution* p = polygons(text);
    bool ok = p->valid;
    p->unref();
    return ok;
  };
  EXPECT_FALSE(valid("1 3 0 0 1 0 0 1 5"));                  // a triangle
  EXPECT_FALSE(valid("1 4 0 0 1 1 1 0 0 1 5"));              // a figure of eight
  EXPECT_FALSE(valid("1 4 0 0 1 0 1 1 0 1 -2"));             // a negative count
  EXPECT_FALSE(valid("0"));
  EXPECT_FALSE(valid("2 4 0 0 1 0 1 1 0 1 5"));              // the second polygon is missing
  EXPECT_TRUE(valid("1 4 0 0 0 1 1 1 1 0 5"));               // clockwise is taken as given
}

TEST(PolyDistribution, SamplesInsideEachPolygonAndSkipsEmptyOnes) {
  tk::random_source::fix_seed(5);
  Trl_RxPolyDistribution* d = polygons(
      "3\n"
      "4  0 0  10 0  10 10  0 10  4\n"
      "4  20 0  30 0  30 10  20 10  0\n"
      "6  40 0  60 0  60 10  50 10  50 20  40 20  3\n");  // an L shape
  ASSERT_TRUE(d->valid);
  tk::list<Trl_Rx> users;
  d->sample(users, nullptr, 1.0, false, values());
  ASSERT_EQ(users.size(), 7);
  int first = 0, third = 0;
  tk::polygon l_shape = d->polygons.tail();
  for (const Trl_Rx& rx : users) {
    tk::point p = rx.position.to_point();
    if (p.xcoord() <= 10) {
      ++first;
    } else {
      ++third;
      EXPECT_EQ(l_shape.side_of(p), 1) << p.xcoord() << "," << p.ycoord();
    }
    EXPECT_FALSE(p.xcoord() >= 20 && p.xcoord() <= 30);  // the empty polygon gets nobody
  }
  EXPECT_EQ(first, 4);
  EXPECT_EQ(third, 3);
  tk::random_source::release_seed();
  d->unref();
}

}  // namespace
