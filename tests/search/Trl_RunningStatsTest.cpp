#include <gtest/gtest.h>

#include "search/Trl_RunningStats.h"

TEST(Trl_RunningStats, AddsCountSumSquaresAndExtremes) {
  Trl_RunningStats s;
  s.add(3);
  s.add(-1);
  s.add(3);
  EXPECT_EQ(s.count, 3);
  EXPECT_EQ(s.sum, 5);
  EXPECT_EQ(s.sum_of_squares, 19);
  EXPECT_EQ(s.minimum, -1);
  EXPECT_EQ(s.maximum, 3);
}
