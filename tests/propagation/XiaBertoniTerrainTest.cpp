// The Xia-Bertoni model on small terrains written into a temporary folder. Every terrain
// here is made of rows: a row holds one height and is all building or all open, so that a
// line from a base station to a user meets exactly the rows it crosses, whatever its column.
// The mean roof height, spacing and street width of each line are worked out by hand in the
// comments, and the gain is checked in dB against the formula summed term by term.
#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assigner.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

const double pi = 3.14159265358979323846;
const double lambda = 299792458.0 / 2e9;  // m at 2 GHz
const double antennas_db = 9 - 3;         // default base station and mobile gains, dB
const double indoor_attenuation = 15.8493192;

double db(double x) { return 10 * std::log10(x); }

// The terms of the formula in dB, each from the hand-worked geometry of a line.
double free_space_db(double d, bool well_above) {
  return 20 * std::log10(lambda / (4 * pi * d)) + (well_above ? 0 : db(2));
}

double rooftop_db(double dh_rx, double street) {
  const double r = std::sqrt(dh_rx * dh_rx + street * street / 4);
  double theta = std::atan(2 * dh_rx / street);
  if (theta < 0.01) theta = 0.01;
  return db(lambda) - db(2 * pi * pi) - db(r) + 20 * std::log10(1 / theta - 1 / (theta + 2 * pi));
}

double screens_above_db(double dh_tx, double d, double spacing, double linear = 5.5225,
                        double exponent = 1.8) {
  return db(linear) + exponent * (db(dh_tx / d) + 0.5 * db(spacing / lambda));
}

double screens_below_db(double dh_tx, double d, double spacing) {
  const double q = spacing / (2 * pi * (d - spacing));
  const double phi = -std::atan2(dh_tx, spacing);
  const double t = 1 / phi - 1 / (phi + 2 * pi);
  return 2 * db(q) + db(lambda) - 0.5 * db(dh_tx * dh_tx + spacing * spacing) + 2 * db(std::fabs(t));
}

double screens_near_db(double d, double spacing) { return 2 * db(spacing / d); }

// A terrain of `columns` columns and one row per entry, 10 m apart, origin at (0, 0): row j
// has height heights[j] (m) and is built when built[j] is set.
class Rows : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("celvane_xia_bertoni");
    fs::remove_all(dir);
    fs::create_directories(dir);
  }
  void TearDown() override {
    for (Trl_Terrain* t : made) t->release();
    fs::remove_all(dir);
  }

  Trl_Terrain* terrain(const std::vector<short>& heights, const std::vector<int>& built,
                       int columns = 3, int clutter_rows = -1) {
    const std::string stem = (dir / ("t" + std::to_string(made.size()))).string();
    const unsigned rows = static_cast<unsigned>(heights.size());
    raster_files::write_map(stem + ".map", rows, static_cast<unsigned>(columns),
                            [&](unsigned, unsigned r) { return heights[r]; },
                            "xlc 0 ylc 0 gridsize 10 minimum 0 maximum 100");
    if (clutter_rows < 0) clutter_rows = static_cast<int>(rows);
    std::ostringstream urb;
    urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 10\n"
        << clutter_rows << " " << columns << "\n";
    for (int r = 0; r < clutter_rows; ++r) urb << (built[r] ? 1 : 0) << " " << columns << "\n";
    raster_files::write_text(stem + ".urb", urb.str());
    Trl_Terrain* t = new Trl_Terrain;
    testing::internal::CaptureStdout();
    t->load(tk::to_drive_path(stem + ".map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
    testing::internal::GetCapturedStdout();
    made.push_back(t);
    EXPECT_TRUE(t->loaded());
    return t;
  }

  // The default records at a place, with their cells on the terrain's height grid.
  static Trl_Tx station(const Trl_Terrain* t, double x, double y, double z) {
    Trl_Tx tx;
    tx.position = tk::d3_point(x, y, z);
    if (t) tx.set_cell(t->height_grid());
    return tx;
  }
  static Trl_Rx user(const Trl_Terrain* t, double x, double y, double z = 1.5) {
    Trl_Rx rx;
    rx.position = tk::d3_point(x, y, z);
    if (t) rx.set_cell(t->height_grid());
    return rx;
  }

  static Trl_XiaBertoni model(Trl_Terrain* t, bool geometric = true, double tolerance = 0.95,
                              double max_radius = 1500, double lmsd_linear = 5.5225,
                              double lmsd_exponent = 1.8) {
    return Trl_XiaBertoni(t, 2, max_radius, tolerance, geometric, lmsd_linear, lmsd_exponent, 32.2,
                          35.1, indoor_attenuation);
  }

  fs::path dir;
  std::vector<Trl_Terrain*> made;
};

// Rows of the street of three blocks: buildings of 12 m on rows 3-4, 8-9 and 13-14.
const std::vector<short> block_heights = {0, 0, 0, 12, 12, 0, 0, 0, 12, 12, 0, 0, 0, 12, 12, 0, 0, 0, 0};
const std::vector<int> block_built = {0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0};

}  // namespace

TEST_F(Rows, FlatStreetIsFreeSpace) {
  Trl_Terrain* t = terrain(std::vector<short>(20, 0), std::vector<int>(20, 0));
  Trl_XiaBertoni geo = model(t), avg = model(t, false);
  const Trl_Tx tx = station(t, 10, 0, 30);
  const Trl_Rx rx = user(t, 10, 150);
  // 16 open cells, no building: spacing = d = 150, so the line is free space, and the base
  // station at 30 m is well above a roof height of 0: F^2.
  EXPECT_NEAR(db(geo.gain(tx, rx)), antennas_db + free_space_db(150, true), 1e-9);
  EXPECT_EQ(geo.profile_size, 20u);
  EXPECT_EQ(geo.h_roof, 0.0);
  EXPECT_EQ(geo.spacing, 150.0);
  EXPECT_EQ(geo.h_tx, 30.0);
  EXPECT_EQ(geo.street, 150.0 / 16);  // one street, no gap in the product: (d / n) * 1
  EXPECT_EQ(avg.gain(tx, rx), geo.gain(tx, rx));
  EXPECT_EQ(avg.street, 16 * 150.0 / 16);  // street_cells * d / (n * streets)
  EXPECT_FALSE(geo.indoor);
  EXPECT_EQ(std::string(geo.description().cstring()), "");
}

TEST_F(Rows, RowOfBuildingsBetweenStationAndUser) {
  Trl_Terrain* t = terrain(block_heights, block_built);
  const Trl_Tx tx = station(t, 10, 0, 30);
  const Trl_Rx rx = user(t, 10, 180);
  // n = 19, d = 180. Walk: gaps of 3 open cells before each of the three buildings enter the
  // product, 3 * 3 * 3 = 27; streets = 1 (open start) + 3 building ends = 4; street cells
  // 3 + 1 + 2 + 1 + 2 + 1 + 3 = 13; three buildings with mean height 12 over flat ground.
  const double d = 180, h_roof = 12, spacing = 60, dh_tx = 30 - 12, dh_rx = 12 - 1.5;
  const double street_geo = (d / 19) * std::pow(27.0, 0.25);
  const double street_avg = 13 * d / (19 * 4);

  Trl_XiaBertoni geo = model(t);
  const double g = geo.gain(tx, rx);
  EXPECT_EQ(geo.h_tx, 30.0);
  EXPECT_EQ(geo.h_roof, h_roof);
  EXPECT_EQ(geo.spacing, spacing);
  EXPECT_NEAR(geo.street, street_geo, 1e-12);
  EXPECT_EQ(geo.dh_tx, dh_tx);
  EXPECT_EQ(geo.dh_rx, dh_rx);
  // 12 / 30 = 0.4 < 0.95: well above.
  EXPECT_NEAR(db(g), antennas_db + free_space_db(d, true) + rooftop_db(dh_rx, street_geo) +
                         screens_above_db(dh_tx, d, spacing),
              1e-9);

  Trl_XiaBertoni avg = model(t, false);
  EXPECT_NEAR(db(avg.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(dh_rx, street_avg) +
                                        screens_above_db(dh_tx, d, spacing),
              1e-9);
  EXPECT_NEAR(avg.street, street_avg, 1e-12);

  // The Lmsd constants are the model's own: 7 and 2 instead of 2.35^2 and 1.8.
  Trl_XiaBertoni lmsd = model(t, true, 0.95, 1500, 7, 2);
  EXPECT_NEAR(db(lmsd.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(dh_rx, street_geo) +
                                         screens_above_db(dh_tx, d, spacing, 7, 2),
              1e-9);

  // A tolerance of 0.3: 12 / 30 = 0.4 is no longer well above, and 30 is not below 12, so
  // the antenna counts as near roof height: 2 F^2 and (spacing / d)^2.
  Trl_XiaBertoni strict = model(t, true, 0.3);
  EXPECT_NEAR(db(strict.gain(tx, rx)), antennas_db + free_space_db(d, false) + rooftop_db(dh_rx, street_geo) +
                                           screens_near_db(d, spacing),
              1e-9);

  // The same line by a profile the caller fetched gives the same gain.
  std::vector<double> heights(block_heights.begin(), block_heights.end());
  Trl_TxBitvector bits(19, true);
  for (int k = 0; k < 19; ++k) bits.assign(k, block_built[k] != 0);
  EXPECT_EQ(geo.gain_on_profile(tx, rx, heights.data(), bits, 19), g);
  // So does a second model made from the first.
  Trl_XiaBertoni copy(geo);
  EXPECT_EQ(copy.gain(tx, rx), g);
  EXPECT_EQ(t->refCount, 6);  // the test's own and five models'
}

TEST_F(Rows, BaseStationOnARoof) {
  // Rows 0-1: the station's building, roof 20 m; buildings of 14 m (rows 5-6) and 16 m
  // (rows 10-11); open ground 0 elsewhere. The user stands on row 14.
  Trl_Terrain* t = terrain({20, 20, 0, 0, 0, 14, 14, 0, 0, 0, 16, 16, 0, 0, 0},
                           {1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0});
  const Trl_Tx tx = station(t, 10, 0, 5);
  const Trl_Rx rx = user(t, 10, 140);
  // n = 15, d = 140. Ground A = H[2] = 0, Z = 0. The antenna stands on its roof: h_tx = 25.
  // The walk starts in a building and with no street; the station's own building ends at
  // row 2 and counts (roof 20), then 14 and 16: h_roof = 50 / 3. Gaps of 3 enter the product
  // twice: 9; streets = 3; street cells 1 + 2 + 1 + 2 + 1 + 2 = 9.
  const double d = 140, h_roof = 50.0 / 3, spacing = d / 3;
  const double dh_tx = 25 - h_roof, dh_rx = h_roof - 1.5;
  const double street_geo = (d / 15) * std::pow(9.0, 1.0 / 3);
  const double street_avg = 9 * d / (15 * 3);
  Trl_XiaBertoni geo = model(t), avg = model(t, false);
  const double g = geo.gain(tx, rx);
  EXPECT_EQ(geo.h_tx, 25.0);
  EXPECT_NEAR(geo.h_roof, h_roof, 1e-12);
  EXPECT_NEAR(geo.street, street_geo, 1e-12);
  // (50/3) / 25 = 0.67 < 0.95: well above.
  EXPECT_NEAR(db(g), antennas_db + free_space_db(d, true) + rooftop_db(dh_rx, street_geo) +
                         screens_above_db(dh_tx, d, spacing),
              1e-9);
  EXPECT_NEAR(db(avg.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(dh_rx, street_avg) +
                                        screens_above_db(dh_tx, d, spacing),
              1e-9);
  EXPECT_NEAR(avg.street, 28.0, 1e-12);
}

TEST_F(Rows, StationBelowAndNearTheRoofs) {
  // Buildings of 20 m on rows 3-4 and 8-9, the user on row 12.
  Trl_Terrain* t = terrain({0, 0, 0, 20, 20, 0, 0, 0, 20, 20, 0, 0, 0}, {0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0});
  const Trl_Rx rx = user(t, 10, 120);
  // n = 13, d = 120: two buildings, h_roof 20, spacing 60; gaps 3 * 3 = 9; streets 3.
  const double d = 120, spacing = 60, dh_rx = 20 - 1.5;
  const double street = (d / 13) * std::pow(9.0, 1.0 / 3);
  Trl_XiaBertoni geo = model(t);
  // At 5 m: 5 / 20 = 0.25 < 0.95, well below; free space is 2 F^2.
  EXPECT_NEAR(db(geo.gain(station(t, 10, 0, 5), rx)),
              antennas_db + free_space_db(d, false) + rooftop_db(dh_rx, street) + screens_below_db(15, d, spacing),
              1e-9);
  EXPECT_NEAR(geo.street, street, 1e-12);
  EXPECT_EQ(geo.dh_tx, 15.0);
  // At 19.5 m: 19.5 / 20 = 0.975, neither well below nor above: (spacing / d)^2.
  const Trl_Tx near_roof = station(t, 10, 0, 19.5);
  EXPECT_NEAR(db(geo.gain(near_roof, rx)),
              antennas_db + free_space_db(d, false) + rooftop_db(dh_rx, street) + screens_near_db(d, spacing), 1e-9);
  // With a tolerance of 0.99 the same antenna is well below.
  Trl_XiaBertoni loose = model(t, true, 0.99);
  EXPECT_NEAR(db(loose.gain(near_roof, rx)),
              antennas_db + free_space_db(d, false) + rooftop_db(dh_rx, street) + screens_below_db(0.5, d, spacing),
              1e-9);
  // At exactly roof height: 2 F^2 and the near-roof case.
  EXPECT_NEAR(db(geo.gain(station(t, 10, 0, 20), rx)),
              antennas_db + free_space_db(d, false) + rooftop_db(dh_rx, street) + screens_near_db(d, spacing), 1e-9);
}

TEST_F(Rows, RoofsAreMeasuredOverTheGroundLine) {
  // Ground rising 1 m a row from 5 m; buildings 10 m over the ground on rows 4-5 and 9-10.
  std::vector<short> h;
  std::vector<int> b = {0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0};
  for (int j = 0; j < 13; ++j) h.push_back(static_cast<short>(5 + j + (b[j] ? 10 : 0)));
  Trl_Terrain* t = terrain(h, b);
  const Trl_Tx tx = station(t, 10, 0, 30);
  const Trl_Rx rx = user(t, 10, 120);
  // A = 5, Z = 17, slope 1: each building cell stands 10 over the line. Gaps 4 and 3 give
  // the product 12; streets 3; h_tx = (5 - 5) + 30; the mobile's height is its own 1.5.
  const double d = 120, spacing = 60, h_roof = 10;
  const double street = (d / 13) * std::pow(12.0, 1.0 / 3);
  Trl_XiaBertoni geo = model(t);
  EXPECT_NEAR(db(geo.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(h_roof - 1.5, street) +
                                        screens_above_db(30 - h_roof, d, spacing),
              1e-9);
  EXPECT_EQ(geo.h_roof, h_roof);
  EXPECT_EQ(geo.h_tx, 30.0);
  EXPECT_EQ(geo.h_rx, 1.5);
}

TEST_F(Rows, FlatBuildingsMergeIntoTheStreet) {
  // Rows 3-4 are flagged as buildings but stand no higher than the ground; 12 m buildings
  // on rows 8-9 and 13-14; the user on row 17.
  Trl_Terrain* t = terrain({0, 0, 0, 0, 0, 0, 0, 0, 12, 12, 0, 0, 0, 12, 12, 0, 0, 0},
                           {0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 0});
  // n = 18, d = 170. The flat building takes the gap of 3 into the product when it begins,
  // and then joins the street: the gap grows to 3 + 2 = 5 by row 7, which enters at row 8.
  // Product 3 * 5 * 3 = 45; streets 3; street cells 3 + 3 + 2 + 1 + 2 + 1 + 2 = 14.
  const double d = 170, spacing = 85;
  const double street_geo = (d / 18) * std::pow(45.0, 1.0 / 3);
  const double street_avg = 14 * d / (18 * 3);
  const Trl_Tx tx = station(t, 10, 0, 30);
  const Trl_Rx rx = user(t, 10, 170);
  Trl_XiaBertoni geo = model(t), avg = model(t, false);
  EXPECT_NEAR(db(geo.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(10.5, street_geo) +
                                        screens_above_db(18, d, spacing),
              1e-9);
  EXPECT_NEAR(db(avg.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(10.5, street_avg) +
                                        screens_above_db(18, d, spacing),
              1e-9);
  EXPECT_EQ(geo.spacing, spacing);
}

TEST_F(Rows, UserInsideABuilding) {
  // Buildings of 12 m on rows 3-4 and 8-9; the user's building of 15 m on rows 12-13.
  Trl_Terrain* t = terrain({0, 0, 0, 12, 12, 0, 0, 0, 12, 12, 0, 0, 15, 15},
                           {0, 0, 0, 1, 1, 0, 0, 0, 1, 1, 0, 0, 1, 1});
  const Trl_Tx tx = station(t, 10, 0, 30);
  // n = 14, d = 130. The user's building is still open at the end and does not count:
  // two buildings, spacing 65; the gap of 2 before it still enters the product: 3 * 3 * 2.
  // Z is the last open cell's height 0; 1.5 <= 15 - 0, so the user is indoors.
  const double d = 130, spacing = 65;
  const double street = (d / 14) * std::pow(18.0, 1.0 / 3);
  Trl_XiaBertoni geo = model(t);
  EXPECT_NEAR(db(geo.gain(tx, user(t, 10, 130))),
              antennas_db + free_space_db(d, true) + rooftop_db(10.5, street) + screens_above_db(18, d, spacing) -
                  db(indoor_attenuation),
              1e-9);
  EXPECT_TRUE(geo.indoor);
  // A mobile at 15 m is still inside; at 20 m, above the roof, it is outdoors.
  geo.gain(tx, user(t, 10, 130, 15));
  EXPECT_TRUE(geo.indoor);
  EXPECT_NEAR(db(geo.gain(tx, user(t, 10, 130, 20))),
              antennas_db + free_space_db(d, true) + rooftop_db(8, street) + screens_above_db(18, d, spacing), 1e-9);
  EXPECT_FALSE(geo.indoor);
}

TEST_F(Rows, FarLawBeyondTheCellRadius) {
  // Open flat rows 0-8, a 15 m building on row 9; ten columns, so users can stand aside.
  std::vector<short> h(10, 0);
  std::vector<int> b(10, 0);
  h[9] = 15;
  b[9] = 1;
  Trl_Terrain* t = terrain(h, b, 10);
  Trl_XiaBertoni geo = model(t, true, 0.95, 100);
  const Trl_Tx tx = station(t, 10, 0, 30);
  // (10, 0) to (70, 80): d = 100 exactly, still the near side: no building on the line.
  EXPECT_NEAR(db(geo.gain(tx, user(t, 70, 80))), antennas_db + free_space_db(100, true), 1e-9);
  // (70, 90) lies in the building, but beyond the radius only the far law counts.
  const double d = std::sqrt(60.0 * 60 + 90 * 90);
  EXPECT_NEAR(db(geo.gain(tx, user(t, 70, 90))), antennas_db - (32.2 + 35.1 * std::log10(d)), 1e-9);
  EXPECT_FALSE(geo.indoor);
  // Without a terrain the far law is the same.
  Trl_XiaBertoni bare = model(nullptr, true, 0.95, 100);
  EXPECT_NEAR(db(bare.gain(tx, user(nullptr, 70, 90))), antennas_db - (32.2 + 35.1 * std::log10(d)), 1e-9);
}

TEST_F(Rows, NoTerrainIsFreeSpace) {
  Trl_XiaBertoni bare = model(nullptr);
  EXPECT_EQ(bare.profile_size, 0u);
  const Trl_Rx rx = user(nullptr, 300, 400);
  EXPECT_NEAR(db(bare.gain(station(nullptr, 0, 0, 30), rx)), antennas_db + free_space_db(500, true), 1e-9);
  EXPECT_EQ(bare.h_roof, 0.0);
  // The distance is the plane one: the antenna height does not enter it.
  EXPECT_NEAR(db(bare.gain(station(nullptr, 0, 0, 3), rx)), antennas_db + free_space_db(500, true), 1e-9);
  // An antenna at 0 m is not above a roof height of 0: 2 F^2.
  EXPECT_NEAR(db(bare.gain(station(nullptr, 0, 0, 0), rx)), antennas_db + free_space_db(500, false), 1e-9);
}

TEST_F(Rows, ShortLinesAndZeroDistance) {
  Trl_Terrain* t = terrain(block_heights, block_built);
  Trl_XiaBertoni geo = model(t);
  // Both ends in one open cell, 3 and 2 m apart: n = 1, free space at d = sqrt(13).
  const Trl_Tx tx = station(t, 10, 100, 30);
  double g = geo.gain(tx, user(t, 13, 102));
  EXPECT_NEAR(db(g), antennas_db + free_space_db(std::sqrt(13.0), true), 1e-9);
  // Both in one building cell (row 3): no street, no building counted: free space.
  g = geo.gain(station(t, 10, 30, 30), user(t, 12, 31));
  EXPECT_NEAR(db(g), antennas_db + free_space_db(std::sqrt(5.0), true), 1e-9);
  EXPECT_FALSE(geo.indoor);  // 1.5 m is above the 0 m the building stands over its own ground
  // A line with one building: spacing = d, free space.
  g = geo.gain(station(t, 10, 0, 30), user(t, 10, 70));
  EXPECT_NEAR(db(g), antennas_db + free_space_db(70, true), 1e-9);
  EXPECT_EQ(geo.spacing, 70.0);
  // A line entirely in buildings: A = H[0], Z = H[n-1], no street, free space; a mobile at
  // 0 m is indoors.
  g = geo.gain(station(t, 10, 30, 30), user(t, 10, 40, 0));
  EXPECT_NEAR(db(g), antennas_db + free_space_db(10, true) - db(indoor_attenuation), 1e-9);
  EXPECT_EQ(geo.street, 0.0);
  // Zero distance: the gain is infinite, with and without a terrain.
  EXPECT_EQ(geo.gain(tx, user(t, 10, 100)), std::numeric_limits<double>::infinity());
  Trl_XiaBertoni bare = model(nullptr);
  EXPECT_EQ(bare.gain(tx, user(nullptr, 10, 100)), std::numeric_limits<double>::infinity());
}

TEST_F(Rows, StationOffTheTerrainAndUsersOnItsBorder) {
  Trl_Terrain* t = terrain(block_heights, block_built);
  Trl_XiaBertoni geo = model(t);
  // A station 40 m before the first row takes the nearest cell, row 0, for its profile,
  // while the distance is that of its position: the block street with d = 220.
  const Trl_Tx off = station(t, 10, -40, 30);
  EXPECT_EQ(off.cell_j, 0);
  double d = 220;
  double street = (d / 19) * std::pow(27.0, 0.25);
  EXPECT_NEAR(db(geo.gain(off, user(t, 10, 180))), antennas_db + free_space_db(d, true) + rooftop_db(10.5, street) +
                                                      screens_above_db(18, d, d / 3),
              1e-9);
  // From the last column of the first row to the first column of the last row: the walk
  // meets each row once, so the profile is the block street again.
  d = std::sqrt(20.0 * 20 + 180 * 180);
  street = (d / 19) * std::pow(27.0, 0.25);
  EXPECT_NEAR(db(geo.gain(station(t, 20, 0, 30), user(t, 0, 180))),
              antennas_db + free_space_db(d, true) + rooftop_db(10.5, street) + screens_above_db(18, d, d / 3), 1e-9);
}

TEST_F(Rows, CellsBeyondTheClutterCountAsOpen) {
  // Heights for 22 rows, clutter only for the first 19 (the block street): rows 19-21 have
  // heights of 12 m but no building bits.
  std::vector<short> h = block_heights;
  std::vector<int> b = block_built;
  for (int k = 0; k < 3; ++k) {
    h.push_back(12);
    b.push_back(1);
  }
  Trl_Terrain* t = terrain(h, b, 3, 19);
  Trl_XiaBertoni geo = model(t);
  // From row 21 down to row 0: the first three cells are open ground at 12 m, so A = 12 and
  // Z = 0 with n = 22, slope -12/21. The roofs over the line are 12 - (12 - 12 i / 21) for
  // the buildings at i = 7-8, 12-13 and 17-18, that is 12 i / 21; their means are
  // 12 * 7.5 / 21, 12 * 12.5 / 21 and 12 * 17.5 / 21. The station's antenna stands 30 m
  // over the ground A.
  const Trl_Tx tx = station(t, 10, 210, 30);
  const Trl_Rx rx = user(t, 10, 0);
  const double d = 210, h_roof = 12 * (7.5 + 12.5 + 17.5) / 21 / 3;
  // Gaps: 7 open cells before the first building, then 3 and 3: product 63; streets 4;
  // the walk ends with 3 open cells.
  const double street = (d / 22) * std::pow(63.0, 0.25);
  EXPECT_NEAR(db(geo.gain(tx, rx)), antennas_db + free_space_db(d, true) + rooftop_db(h_roof - 1.5, street) +
                                        screens_above_db(30 - h_roof, d, d / 3),
              1e-9);
  EXPECT_NEAR(geo.h_roof, h_roof, 1e-12);
}

// A terrain two rows high (the least a height file may have), every line along its
// first row: the angular fill on 1, 2 and 7 threads gives the plain loop's table to the bit,
// with fewer users than threads.
TEST_F(Rows, AngularFillAlongOneRowIsThePlainLoopOnAnyThreads) {
  Trl_Terrain* t = terrain({7, 7}, {1, 1}, 60);
  tk::list<Trl_Tx> stations;
  tk::list<Trl_Rx> users;
  for (int k = 0; k < 3; ++k) stations.append(station(nullptr, 55.0 + 200 * k, 0, 30));
  for (int k = 0; k < 5; ++k) {
    Trl_Rx u = user(t, 3.0 + 117 * k, 0);
    u.number = 4 - k;
    users.append(u);
  }
  Trl_XiaBertoni plain = model(t);
  std::vector<double> expected;
  for (Trl_Tx tx : stations) {
    tx.set_cell(t->height_grid());
    std::vector<double> row(5);
    for (const Trl_Rx& rx : users) row[rx.number] = plain.gain(tx, rx);
    expected.insert(expected.end(), row.begin(), row.end());
  }
  for (int threads : {1, 2, 7}) {
    Trl_Assigner::terrain_fill_threads = threads;
    Trl_XiaBertoni m = model(t);
    Trl_Assigner a;
    a.prepare(stations, users, Trl_Assigner::parameters(), m, t);
    Trl_Assigner::terrain_fill_threads = 1;
    for (int k = 0; k < 15; ++k) EXPECT_EQ(a.path_gain(k / 5, k % 5), expected[k]) << threads << " threads, " << k;
  }
}
