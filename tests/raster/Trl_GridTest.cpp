#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

#include "raster/Trl_Grid.h"
#include "toolkit/random_source.h"

namespace {

typedef std::vector<std::pair<int, int>> Cells;

Cells walk_line(const Trl_Grid& g, int c0, int r0, int c1, int r1) {
  Cells cells;
  for (Trl_Grid::iterator_line it(g, c0, r0, c1, r1); !it.at_end(); it.advance()) cells.push_back({it.col, it.row});
  return cells;
}

// The cells of the line worked out another way: at major step k the minor coordinate has
// moved round(k * minor / major), halves rounding up.
Cells expected_line(int c0, int r0, int c1, int r1) {
  int di = c1 - c0, dj = r1 - r0;
  int major = std::max(std::abs(di), std::abs(dj)), minor = std::min(std::abs(di), std::abs(dj));
  bool column_major = std::abs(di) >= std::abs(dj);
  int sc = di < 0 ? -1 : 1, sr = dj < 0 ? -1 : 1;
  Cells cells;
  for (int k = 0; k <= major; ++k) {
    int m = major == 0 ? 0 : (2 * k * minor + major) / (2 * major);
    if (column_major)
      cells.push_back({c0 + sc * k, r0 + sr * m});
    else
      cells.push_back({c0 + sc * m, r0 + sr * k});
  }
  return cells;
}

TEST(Grid, ConstructionFromExtentsAndFromSpacingAgree) {
  Trl_Grid a(11, 6, 100, 200, 150, 225, 1);
  EXPECT_EQ(a.dx, 5.0);
  EXPECT_EQ(a.dy, 5.0);
  EXPECT_EQ(a.cells, 66u);
  Trl_Grid b = Trl_Grid::from_spacing(100, 200, 5, 5, 11, 6, 1);
  EXPECT_EQ(b.x1, 150.0);
  EXPECT_EQ(b.y1, 225.0);
  Trl_Grid single(1, 1, 0, 0, 7, 3, 1);
  EXPECT_EQ(single.dx, 7.0);
  EXPECT_EQ(single.dy, 3.0);
  Trl_Grid unloaded;
  EXPECT_EQ(unloaded.nx, 2u);
  EXPECT_EQ(unloaded.dx, 1.0);
}

TEST(Grid, ColumnOfRoundsToTheNearestNodeAndClamps) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 10, 10, 5, 5, 1);
  EXPECT_EQ(g.column_of(tk::point(0, 0)), 0);
  EXPECT_EQ(g.column_of(tk::point(40, 0)), 4);
  EXPECT_EQ(g.column_of(tk::point(5, 0)), 1);  // half a spacing rounds up
  EXPECT_EQ(g.column_of(tk::point(4.999, 0)), 0);
  EXPECT_EQ(g.column_of(tk::point(-100, 0)), 0);
  EXPECT_EQ(g.column_of(tk::point(1e9, 0)), 4);
  EXPECT_EQ(g.row_of(tk::point(0, 14.9)), 1);
  EXPECT_EQ(g.row_of(tk::point(0, 15)), 2);
}

TEST(Grid, OverlapIntersectAndOffset) {
  Trl_Grid a = Trl_Grid::from_spacing(0, 0, 5, 5, 11, 11, 1);    // 0..50
  Trl_Grid b = Trl_Grid::from_spacing(50, 20, 5, 5, 11, 11, 1);  // 50..100, touches in x = 50
  EXPECT_TRUE(a.overlaps(50, 0, 60, 10));
  EXPECT_FALSE(a.overlaps(50.1, 0, 60, 10));
  Trl_Grid r;
  ASSERT_TRUE(a.intersect(b, r));
  EXPECT_EQ(r.nx, 1u);
  EXPECT_EQ(r.ny, 7u);
  EXPECT_EQ(r.x0, 50.0);
  EXPECT_EQ(r.y0, 20.0);
  int di = 0, dj = 0;
  ASSERT_TRUE(b.offset_to(a, di, dj));
  EXPECT_EQ(di, 10);
  EXPECT_EQ(dj, 4);
  Trl_Grid c = Trl_Grid::from_spacing(0, 0, 5.000000001, 5, 11, 11, 1);
  EXPECT_FALSE(a.intersect(c, r));
  EXPECT_FALSE(a.offset_to(c, di, dj));
  Trl_Grid far = Trl_Grid::from_spacing(51, 0, 5, 5, 2, 2, 1);
  EXPECT_FALSE(a.intersect(far, r));
}

TEST(Grid, PlainIteratorRunsToTheLastCellCountingSteps) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 3, 2, 1);
  Cells cells;
  for (Trl_Grid::iterator it(g); !it.at_end(); it.advance()) cells.push_back({it.col, it.row});
  EXPECT_EQ(cells, (Cells{{0, 0}, {1, 0}, {2, 0}, {0, 1}, {1, 1}, {2, 1}}));
  // Started elsewhere it still takes `cells` steps, running past the grid's end.
  Trl_Grid::iterator it(g, 2, 1);
  int steps = 0;
  for (; !it.at_end(); it.advance()) ++steps;
  EXPECT_EQ(steps, 6);
  EXPECT_EQ(it.row, 3);
}

TEST(Grid, LineWalkEdgeCases) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 100, 100, 1);
  Trl_Grid::iterator_line point(g, 5, 5, 5, 5);
  EXPECT_EQ(point.length, 1);
  EXPECT_EQ(point.column_major, 1);
  EXPECT_EQ(walk_line(g, 5, 5, 5, 5), (Cells{{5, 5}}));
  Trl_Grid::iterator_line diagonal(g, 0, 0, 3, -3);
  EXPECT_EQ(diagonal.decision, 3);
  EXPECT_EQ(diagonal.inc_diagonal, 0);
  EXPECT_EQ(walk_line(g, 0, 0, 3, -3), (Cells{{0, 0}, {1, -1}, {2, -2}, {3, -3}}));
  // The tie at the half step goes up in both directions, so a walk and its reverse differ.
  EXPECT_EQ(walk_line(g, 0, 0, 2, 1), (Cells{{0, 0}, {1, 1}, {2, 1}}));
  EXPECT_EQ(walk_line(g, 2, 1, 0, 0), (Cells{{2, 1}, {1, 0}, {0, 0}}));
  EXPECT_EQ(walk_line(g, 0, 0, 0, -2), (Cells{{0, 0}, {0, -1}, {0, -2}}));
}

TEST(Grid, LineWalkMatchesAnIndependentEnumerationInAllOctants) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 100, 100, 1);
  tk::random_source random(2024u);
  for (int n = 0; n < 2000; ++n) {
    int c0 = random(-50, 50), r0 = random(-50, 50), c1 = random(-50, 50), r1 = random(-50, 50);
    ASSERT_EQ(walk_line(g, c0, r0, c1, r1), expected_line(c0, r0, c1, r1))
        << "from (" << c0 << "," << r0 << ") to (" << c1 << "," << r1 << ")";
  }
}

TEST(Grid, BorderWalkIsCounterClockwiseAndCoversEachBorderCellOnce) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 100, 100, 1);
  Cells cells;
  for (Trl_Grid::iterator_border it(g, 0, 0, 2, 2); !it.at_end(); it.advance()) cells.push_back({it.col, it.row});
  EXPECT_EQ(cells, (Cells{{0, 0}, {1, 0}, {2, 0}, {2, 1}, {2, 2}, {1, 2}, {0, 2}, {0, 1}}));
  for (int w = 2; w < 9; ++w)
    for (int h = 2; h < 9; ++h) {
      std::set<std::pair<int, int>> seen;
      int count = 0;
      for (Trl_Grid::iterator_border it(g, 10, 20, 10 + w - 1, 20 + h - 1); !it.at_end(); it.advance()) {
        ++count;
        seen.insert({it.col, it.row});
        EXPECT_TRUE(it.col == 10 || it.col == 10 + w - 1 || it.row == 20 || it.row == 20 + h - 1);
      }
      EXPECT_EQ(count, 2 * (w + h) - 4);
      EXPECT_EQ(static_cast<int>(seen.size()), count);
    }
  Trl_Grid::iterator_border one(g, 3, 3, 3, 3);
  EXPECT_EQ(one.total, 0);
  EXPECT_TRUE(one.at_end());
  Trl_Grid::iterator_border thin(g, 0, 0, 0, 2);
  EXPECT_EQ(thin.total, 4);
}

TEST(Grid, SameWalkComparesIndexAndEnds) {
  Trl_Grid g = Trl_Grid::from_spacing(0, 0, 1, 1, 10, 10, 1);
  Trl_Grid::iterator_line a(g, 0, 0, 5, 2), b(g, 0, 0, 5, 2), c(g, 0, 0, 5, 3);
  EXPECT_TRUE(a.same_walk(b));
  EXPECT_TRUE(a.other_walk(c));
  b.advance();
  EXPECT_FALSE(a.same_walk(b));
  EXPECT_EQ(b.cell_index(), 10u * b.row + b.col);
}

}  // namespace
