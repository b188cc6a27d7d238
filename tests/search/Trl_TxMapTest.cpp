// The compacted base station map on hand-placed base stations, over many seeds of GAlib's
// generator: whatever the merges, the map keeps the orders by x and y, gives every base
// station a cell of its own, leaves no two neighbouring rows or columns that could still
// merge, and shows fixed base stations as negative cells.
#include <gtest/gtest.h>

#include <ga/garandom.h>

#include <utility>
#include <vector>

#include "network/Trl_Tx.h"
#include "search/Trl_TxMap.h"

namespace {

struct Layout {
  const char* name;
  std::vector<std::pair<double, double>> xy;  // m
  int fixed;                                  // index of the fixed one, -1 for none
};

tk::list<Trl_Tx> stations(const Layout& layout) {
  tk::list<Trl_Tx> list;
  int i = 0;
  for (auto p : layout.xy) {
    Trl_Tx tx;
    tx.position = tk::d3_point(p.first, p.second, 30);
    tx.number = i;
    tx.status = i == layout.fixed ? 3 : 0;
    list.append(tx);
    ++i;
  }
  return list;
}

// Two lines can merge when no cross line holds something in both.
bool rows_can_merge(const tk::array2<int>& c, int r) {
  for (int j = 0; j <= c.high2(); ++j)
    if (c(r, j) != 0 && c(r + 1, j) != 0) return false;
  return true;
}
bool columns_can_merge(const tk::array2<int>& c, int k) {
  for (int i = 0; i <= c.high1(); ++i)
    if (c(i, k) != 0 && c(i, k + 1) != 0) return false;
  return true;
}

void expect_valid_map(const Layout& layout, unsigned seed) {
  SCOPED_TRACE(testing::Message() << layout.name << ", seed " << seed);
  GAResetRNG(seed);
  Trl_TxMap map(stations(layout), nullptr);
  map.build(false);
  const int n = static_cast<int>(layout.xy.size());
  const tk::array2<int>& c = map.cells;
  std::vector<int> row(n, -1), column(n, -1);
  for (int i = 0; i <= c.high1(); ++i)
    for (int j = 0; j <= c.high2(); ++j) {
      const int v = c(i, j);
      if (v == 0) continue;
      const int tx = (v > 0 ? v : -v) - 1;
      ASSERT_EQ(row[tx], -1) << "base station " << tx << " in two cells";
      row[tx] = i;
      column[tx] = j;
      EXPECT_EQ(v < 0, tx == layout.fixed);
    }
  const tk::array<int> index = map.tx_cells();
  for (int a = 0; a < n; ++a) {
    ASSERT_NE(row[a], -1) << "base station " << a << " has no cell";
    EXPECT_EQ(index[a], row[a] * (c.high2() + 1) + column[a]);
    for (int b = 0; b < n; ++b) {
      if (layout.xy[a].second < layout.xy[b].second) { EXPECT_LE(row[a], row[b]); }
      if (layout.xy[a].first < layout.xy[b].first) { EXPECT_LE(column[a], column[b]); }
    }
  }
  for (int r = 0; r < c.high1(); ++r) EXPECT_FALSE(rows_can_merge(c, r)) << "rows " << r;
  for (int k = 0; k < c.high2(); ++k) EXPECT_FALSE(columns_can_merge(c, k)) << "columns " << k;
}

}  // namespace

TEST(TxMap, CompactedMapKeepsOrdersOneCellEachAndCannotMergeFurther) {
  const Layout layouts[] = {
      {"row", {{0, 0}, {100, 0}, {200, 0}, {300, 0}, {400, 0}}, -1},
      {"column", {{5, 400}, {5, 0}, {5, 300}, {5, 100}}, -1},
      {"diagonal", {{0, 0}, {100, 100}, {200, 200}, {300, 300}, {400, 400}, {500, 500}}, -1},
      {"cluster with a fixed one",
       {{0, 0}, {40, 10}, {15, 60}, {70, 70}, {55, 20}, {30, 35}, {90, 5}, {10, 90}},
       5},
      {"two on equal x", {{50, 0}, {50, 100}}, 1},
  };
  for (const Layout& layout : layouts)
    for (unsigned seed = 1; seed <= 40; ++seed) expect_valid_map(layout, seed);
}

TEST(TxMap, SmallMaps) {
  GAResetRNG(3);
  Trl_TxMap one(stations({"one", {{7, 7}}, -1}), nullptr);
  one.build(false);
  EXPECT_EQ(one.row_count(), 1);
  EXPECT_EQ(one.column_count(), 1);
  EXPECT_EQ(one.cells(0, 0), 1);
  for (unsigned seed = 1; seed <= 10; ++seed) {
    GAResetRNG(seed);
    Trl_TxMap two(stations({"two", {{0, 0}, {100, 100}}, -1}), nullptr);
    two.build(false);
    EXPECT_EQ(two.row_count() * two.column_count(), 2) << "a 1 by 2 or 2 by 1 map";
  }
  // Equal x: the later base station stands to the left while the two keep separate columns.
  int separate = 0;
  for (unsigned seed = 1; seed <= 10; ++seed) {
    GAResetRNG(seed);
    Trl_TxMap equal(stations({"equal x", {{50, 0}, {50, 100}}, -1}), nullptr);
    equal.build(false);
    if (equal.column_count() == 1) continue;
    ++separate;
    EXPECT_EQ(equal.tx_cells()[1], 0);
  }
  EXPECT_GT(separate, 0);
}
