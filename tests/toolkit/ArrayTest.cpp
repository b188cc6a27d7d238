#include <gtest/gtest.h>

#include <set>

#include "support/ErrorGuard.h"
#include "toolkit/array.h"
#include "toolkit/array2.h"
#include "toolkit/h_array.h"

namespace {

TEST(Array, EmptyArrayHasNoValidIndex) {
  tk::array<int> a(0);
  EXPECT_EQ(a.size(), 0);
  EXPECT_EQ(a.low(), 0);
  EXPECT_EQ(a.high(), -1);
  EXPECT_TK_ERROR(a[0], 2, "array::entry index out of range");
  EXPECT_TK_ERROR(a[-1], 2, "array::entry index out of range");
}

TEST(Array, BoundsAreInclusiveAndChecked) {
  tk::array<int> a(3);
  a[0] = 7;
  a[2] = 9;
  EXPECT_EQ(a[2], 9);
  EXPECT_TK_ERROR(a[3], 2, "array::entry index out of range");
  EXPECT_TK_ERROR(tk::array<int>(-2), 1, "array: bad array bounds [0..-3]");
  tk::array2<double> m(2, 3);
  m(1, 2) = 4.5;
  EXPECT_EQ(m(1, 2), 4.5);
  EXPECT_EQ(m.high1(), 1);
  EXPECT_EQ(m.high2(), 2);
  EXPECT_TK_ERROR(m(2, 0), 2, "array::entry index out of range");
  EXPECT_TK_ERROR(m(0, 3), 2, "array::entry index out of range");
}

TEST(Array, SortsByThreeWayComparison) {
  tk::array<int> a(4);
  a[0] = 3;
  a[1] = -1;
  a[2] = 8;
  a[3] = 0;
  a.sort([](const int& x, const int& y) { return x < y ? -1 : (x > y ? 1 : 0); });
  EXPECT_EQ(a[0], -1);
  EXPECT_EQ(a[3], 8);
}

TEST(HArray, KeepsValuesAcrossGrowthAndVisitsEachKeyOnce) {
  tk::h_array<int, int> h(4);
  for (int k = 0; k < 200; ++k) h[k * 4] = k;  // all collide in a table of 4 at first
  EXPECT_GT(h.table_size(), 4);
  for (int k = 0; k < 200; ++k) {
    ASSERT_TRUE(h.defined(k * 4));
    EXPECT_EQ(h[k * 4], k);
  }
  EXPECT_FALSE(h.defined(1));
  std::vector<int> keys = h.keys();
  EXPECT_EQ(keys.size(), 200u);
  EXPECT_EQ(std::set<int>(keys.begin(), keys.end()).size(), 200u);
  // Slot order: keys sorted by key AND (size - 1).
  int mask = h.table_size() - 1;
  for (size_t i = 1; i < keys.size(); ++i) EXPECT_LE(keys[i - 1] & mask, keys[i] & mask);
}

}  // namespace
