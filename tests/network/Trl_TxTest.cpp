#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>
#include <string>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"

namespace {

const double far = std::numeric_limits<double>::max();

struct ReadResult {
  bool good;
  tk::list<Trl_Tx> list;
  tk::point low, high;
};

ReadResult read_text(const std::string& text) {
  std::istringstream in(text);
  ReadResult r;
  Trl_Tx templ(tk::d3_point(0, 0, 35), tk::string(""), -1, 17, 1.5, 0.5, 8, 3, 0.3, 0);
  r.good = Trl_Tx::read_list(in, templ, r.list, r.low, r.high);
  return r;
}

std::string label(const Trl_Tx& tx) { return tx.label.cstring(); }

}  // namespace

TEST(Trl_Tx, DefaultsAndFullConstructor) {
  Trl_Tx d;
  EXPECT_EQ(label(d), "none");
  EXPECT_EQ(d.number, -1);
  EXPECT_EQ(d.position.zcoord(), 30);
  EXPECT_EQ(d.spare, 0);
  EXPECT_EQ(d.status, 0);
  EXPECT_EQ(d.max_power, 20);
  EXPECT_EQ(d.pilot_power, 2);
  EXPECT_EQ(d.max_channel_power, 2);
  EXPECT_NEAR(10 * std::log10(d.gain), 9, 1e-12);
  EXPECT_NEAR(10 * std::log10(d.noise_factor), 5, 1e-12);
  EXPECT_EQ(d.orthogonality, 0.4);

  Trl_Tx f(tk::d3_point(1, 2, 3), tk::string("A"), 4, 5, 6, 7, 8, 9, 0.5, 3);
  EXPECT_EQ(label(f), "A");
  EXPECT_EQ(f.number, 4);
  EXPECT_EQ(f.cell_i, 0);
  EXPECT_EQ(f.spare, 0);
  EXPECT_EQ(f.max_power, 5);
  EXPECT_EQ(f.pilot_power, 6);
  EXPECT_EQ(f.max_channel_power, 7);
  EXPECT_EQ(f.gain, 8);
  EXPECT_EQ(f.noise_factor, 9);
  EXPECT_EQ(f.orthogonality, 0.5);
  EXPECT_EQ(f.status, 3);
  f.set_xy(tk::point(10, 20));
  EXPECT_EQ(f.position.xcoord(), 10);
  EXPECT_EQ(f.position.ycoord(), 20);
  EXPECT_EQ(f.position.zcoord(), 3);
}

TEST(Trl_Tx, NoiseAndDistance) {
  Trl_Tx tx;
  tx.noise_factor = 2;
  // (273.18 + 17) K * k * 5 MHz * 2, with the system's 273.18.
  EXPECT_DOUBLE_EQ(tx.noise(17, 5e6), 290.18 * 1.380658e-23 * 5e6 * 2);
  Trl_Rx rx;
  EXPECT_DOUBLE_EQ(tx.distance(rx), 28.5);  // same x, y; heights 30 and 1.5
  rx.position = tk::d3_point(300, 400, 30);
  EXPECT_DOUBLE_EQ(tx.distance(rx), 500);
}

TEST(Trl_Tx, ReadsRecordsAndNumbersThemByPosition) {
  ReadResult r = read_text("7 10.5 20\n3 -4 5e2\n9 0 0\n");
  ASSERT_TRUE(r.good);
  ASSERT_EQ(r.list.size(), 3);
  const std::string labels[] = {"BS0007", "BS0003", "BS0009"};
  int k = 0;
  for (const Trl_Tx& tx : r.list) {
    EXPECT_EQ(label(tx), labels[k]);
    EXPECT_EQ(tx.number, k);
    EXPECT_EQ(tx.spare, -1);
    EXPECT_EQ(tx.status, 0);
    EXPECT_EQ(tx.position.zcoord(), 0);  // the loader's height
    EXPECT_EQ(tx.max_power, 17);         // radio values from the template
    EXPECT_EQ(tx.orthogonality, 0.3);
    ++k;
  }
  EXPECT_EQ(r.low.xcoord(), -4);
  EXPECT_EQ(r.low.ycoord(), 0);
  EXPECT_EQ(r.high.xcoord(), 10.5);
  EXPECT_EQ(r.high.ycoord(), 500);
}

TEST(Trl_Tx, StreamSemanticsOfTheFile) {
  // Empty: good, nothing read, the box reversed.
  ReadResult empty = read_text("");
  EXPECT_TRUE(empty.good);
  EXPECT_EQ(empty.list.size(), 0);
  EXPECT_EQ(empty.low.xcoord(), far);
  EXPECT_EQ(empty.high.xcoord(), -far);
  EXPECT_TRUE(read_text("  \n\n").good);
  // No final line end: the last record is read whole.
  ReadResult last = read_text("1 2 3\n4 5 6");
  EXPECT_TRUE(last.good);
  EXPECT_EQ(last.list.size(), 2);
  // Windows line ends are white space.
  ReadResult crlf = read_text("1 2 3\r\n4 5 6\r\n");
  EXPECT_TRUE(crlf.good);
  EXPECT_EQ(crlf.list.size(), 2);
  // A record cut off by the end of the file is dropped quietly.
  ReadResult cut = read_text("1 2 3\n4 5");
  EXPECT_TRUE(cut.good);
  EXPECT_EQ(cut.list.size(), 1);
  EXPECT_EQ(cut.high.xcoord(), 2);
  EXPECT_TRUE(read_text("1 2 3\n4").good);
  // Garbage anywhere is an error.
  EXPECT_FALSE(read_text("x 1 2\n").good);
  EXPECT_FALSE(read_text("1 2 3\nabc 5 6\n").good);
  EXPECT_FALSE(read_text("1 2 three\n").good);
  EXPECT_FALSE(read_text("1 2 3\n4 5 six 7\n").good);
  // Text the number extraction does not take: nan, numbers out of range.
  EXPECT_FALSE(read_text("1 nan 3\n").good);
  EXPECT_FALSE(read_text("1 1e400 3\n").good);
  EXPECT_FALSE(read_text("99999999999 1 3\n").good);
  // A fractional record number stops the integer at the dot; ".5" is then x.
  ReadResult frac = read_text("1.5 2 3\n");
  EXPECT_TRUE(frac.good);
  ASSERT_EQ(frac.list.size(), 1);
  EXPECT_EQ(frac.list.head().position.xcoord(), 0.5);
}

TEST(Trl_Tx, LabelsKeepAllDigits) {
  ReadResult r = read_text("12345 0 0\n-5 0 0\n");
  ASSERT_EQ(r.list.size(), 2);
  EXPECT_EQ(label(r.list.head()), "BS12345");
  EXPECT_EQ(label(r.list.tail()), "BS-005");
}

TEST(Trl_Tx, NearestAndOrderings) {
  tk::list<Trl_Tx> list;
  EXPECT_EQ(Trl_Tx::nearest(list, tk::point(0, 0)), nullptr);
  Trl_Tx a, b, c;
  a.set_xy(tk::point(0, 10));
  b.set_xy(tk::point(10, 0));
  c.set_xy(tk::point(100, 100));
  a.number = 0;
  b.number = 1;
  c.number = 2;
  list.append(c);
  EXPECT_EQ(list[Trl_Tx::nearest(list, tk::point(1e9, 1e9))].number, 2);
  list.append(a);
  list.append(b);
  // a and b are equally far from the origin: the earlier in the list wins.
  EXPECT_EQ(list[Trl_Tx::nearest(list, tk::point(0, 0))].number, 0);
  EXPECT_EQ(list[Trl_Tx::nearest(list, tk::point(9, 1))].number, 1);
  EXPECT_EQ(compare_tx_x(a, b), -1);
  EXPECT_EQ(compare_tx_x(b, a), 1);
  EXPECT_EQ(compare_tx_y(a, b), 1);
  EXPECT_EQ(compare_tx_y(a, a), 0);
}

TEST(Trl_Tx, RandomStationsWithoutTerrain) {
  Trl_RandomRegion region(20, 980, 40, 60, 12);
  tk::list<Trl_Tx> list;
  Trl_Tx templ;
  templ.max_power = 11;
  Trl_Tx::generate(list, templ, region);
  ASSERT_EQ(list.size(), 12);
  int k = 0;
  for (const Trl_Tx& tx : list) {
    char expected[16];
    std::snprintf(expected, sizeof expected, "BS%04d", k);
    EXPECT_EQ(label(tx), expected);
    EXPECT_EQ(tx.number, k);
    EXPECT_EQ(tx.max_power, 11);
    EXPECT_EQ(tx.position.zcoord(), 30);
    EXPECT_GE(tx.position.xcoord(), 20);
    EXPECT_LE(tx.position.xcoord(), 980);
    EXPECT_GE(tx.position.ycoord(), 40);
    EXPECT_LE(tx.position.ycoord(), 60);
    ++k;
  }
}
