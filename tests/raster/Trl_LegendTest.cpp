#include <gtest/gtest.h>

#include <cfloat>
#include <cstring>
#include <string>

#include "app/Trl_Pixmap.h"
#include "raster/Trl_Legend.h"

namespace {

TEST(Legend, RegularClassesJumpFromCountMinusOneToLast) {
  Trl_Legend coverage(false, 14, 50, 10);  // the coverage raster's legend
  EXPECT_EQ(coverage.last, 15);
  EXPECT_EQ(coverage.highest, 180.0);
  EXPECT_EQ(coverage.index_of(0), 0);  // a cell left at 0
  EXPECT_EQ(coverage.index_of(49.999), 0);
  EXPECT_EQ(coverage.index_of(50), 1);
  EXPECT_EQ(coverage.index_of(59.999), 1);
  EXPECT_EQ(coverage.index_of(60), 2);
  EXPECT_EQ(coverage.index_of(179.9), 13);
  EXPECT_EQ(coverage.index_of(180), 15);
  EXPECT_EQ(coverage.index_of(1e9), 15);
  // Colours: item 0 is 1, items 1.. follow the table, the last is 2.
  EXPECT_EQ(coverage.items[0].colour, 1);
  EXPECT_EQ(coverage.items[1].colour, 15);
  EXPECT_EQ(coverage.items[14].colour, 3);
  EXPECT_EQ(coverage.items[15].colour, 2);
  EXPECT_EQ(coverage.items[15].value, DBL_MAX);
  EXPECT_EQ(coverage.items[15].label, tk::string(""));
  EXPECT_EQ(coverage.items[2].label, tk::string("70"));
  EXPECT_EQ(coverage.colour_of(55), 15);
}

TEST(Legend, ClutterAndAZeroStep) {
  Trl_Legend clutter(false, 2, 0, 1);
  EXPECT_EQ(clutter.index_of(0), 1);  // a clear cell
  EXPECT_EQ(clutter.index_of(1), 3);  // a set cell: 1 is already at `highest`
  Trl_Legend flat(false, 14, 7, 0);
  EXPECT_EQ(flat.index_of(6.9), 0);
  EXPECT_EQ(flat.index_of(7), flat.last);
  EXPECT_EQ(flat.index_of(100), flat.last);
}

TEST(Legend, IrregularTakesTheFirstBoundAboveTheValue) {
  Trl_Legend l(true, 3, 10, 5);  // bounds 10, 15, 20, 25, then the largest double
  EXPECT_EQ(l.index_of(9), 0);
  EXPECT_EQ(l.index_of(10), 1);
  EXPECT_EQ(l.index_of(14.9), 1);
  EXPECT_EQ(l.index_of(15), 2);
  EXPECT_EQ(l.index_of(25), 4);
  EXPECT_EQ(l.index_of(1e300), 4);
}

TEST(Pixmap, HeaderColourLinesAndRowsForOneCharacterPerPixel) {
  Trl_Pixmap p(3, 2, 64);
  EXPECT_EQ(p.chars_per_pixel, 1);
  EXPECT_EQ(p.colour_line_size, 12);
  EXPECT_EQ(p.size, 33u + 64 * 12 + 2 * 4 + 1);
  EXPECT_EQ(std::string(p.xpm()[0]), "       3       2      64       1");
  EXPECT_EQ(std::string(p.xpm()[1]), ". c #000000");
  EXPECT_EQ(std::string(p.xpm()[2]), "# c #000000");
  EXPECT_EQ(std::string(p.xpm()[3]), "a c #000000");
  EXPECT_EQ(std::string(p.xpm()[64]), "9 c #000000");
  p.set_colour(2, 255, 16, 1);
  EXPECT_EQ(std::string(p.xpm()[3]), "a c #ff1001");
  p.set_pixel(0, 0, 2);
  p.set_pixel(1, 0, 63);
  p.set_pixel(2, 0, 0);
  EXPECT_EQ(std::string(p.xpm()[65]), "a9.");
  EXPECT_EQ(p.xpm()[66] - p.xpm()[65], 4);
}

TEST(Pixmap, SixtyFiveColoursTakeTwoCharactersAndCarry) {
  Trl_Pixmap p(2, 1, 65);
  EXPECT_EQ(p.chars_per_pixel, 2);
  EXPECT_EQ(p.colour_line_size, 13);
  EXPECT_EQ(std::string(p.xpm()[1]), ".. c #000000");
  EXPECT_EQ(std::string(p.xpm()[64]), ".9 c #000000");
  EXPECT_EQ(std::string(p.xpm()[65]), "#. c #000000");  // after "9" the step carries
  p.set_colour(64, 1, 2, 3);
  EXPECT_EQ(std::string(p.xpm()[65]), "#. c #010203");
  p.set_pixel(1, 0, 64);
  p.set_pixel(0, 0, 0);
  EXPECT_EQ(std::string(p.xpm()[66]), "..#.");
}

}  // namespace
