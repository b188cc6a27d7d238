// The coverage map on a small hand-made city, checked cell by cell against the loss on the
// first line that reaches each cell, worked out in the test by walking that line itself.
#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <filesystem>
#include <sstream>
#include <string>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "network/Trl_TxBitvector.h"
#include "propagation/Trl_CoverageMap.h"
#include "propagation/Trl_ProfileRuns.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Terrain.h"
#include "support/CoverageByLines.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

// 30 by 30 height cells of 10 m from the origin; the clutter covers only columns 0 to 24.
// Blocks of 2 by 2 buildings every 4 cells in the western 13 columns (a few runs a row);
// every third block is flat, a metre below the ground, which the analysis takes for street.
// The ground rises northward by 1 m every 3 rows.
const int size = 30, clutter_columns = 25;
bool is_building(int c, int r) { return c < 13 && c % 4 >= 2 && r % 4 >= 2; }
bool is_flat(int c, int r) { return (c / 4 + r / 4) % 3 == 0; }
short height_of(int c, int r) {
  if (!is_building(c, r)) return static_cast<short>(r / 3);
  return static_cast<short>(is_flat(c, r) ? r / 3 - 1 : r / 3 + 12 + (c + r) % 7);
}

class CoverageMap : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("celvane_coverage");
    fs::create_directories(dir);
    const std::string stem = (dir / "city").string();
    raster_files::write_map(stem + ".map", size, size, [](unsigned c, unsigned r) { return height_of(c, r); },
                            "xlc 0 ylc 0 gridsize 10 minimum 0 maximum 30");
    std::ostringstream urb;
    urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n0 0 10\n"
        << size << " " << clutter_columns << "\n";
    for (int r = 0; r < size; ++r) {
      urb << "0";  // every row begins open
      int run = 0;
      for (int c = 0; c < clutter_columns; ++c, ++run)
        if (c > 0 && is_building(c, r) != is_building(c - 1, r)) {
          urb << " " << run;
          run = 0;
        }
      urb << " " << run << "\n";
    }
    raster_files::write_text(stem + ".urb", urb.str());
    testing::internal::CaptureStdout();
    terrain->load(tk::to_drive_path(stem + ".map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(terrain->loaded());
  }
  void TearDown() override {
    terrain->release();
    fs::remove_all(dir);
  }

  Trl_Tx station(int col, int row) const {
    Trl_Tx tx;
    tx.position = tk::d3_point(col * 10.0, row * 10.0, 20);
    tx.set_cell(terrain->height_grid());
    return tx;
  }
  Trl_XiaBertoni model(bool geometric = true) {
    return Trl_XiaBertoni(terrain, 2, 1500, 0.95, geometric, 5.5225, 1.8, 32.2, 35.1, 15.8493192);
  }

  fs::path dir;
  Trl_Terrain* terrain = new Trl_Terrain;
  Trl_Rx user = Trl_Rx(tk::d3_point(0, 0, 1.5), 1, 3.55, 10, 5, 0.125, 1e-11, 1, 0.5, 12.2, 12.2, 0);
};

TEST_F(CoverageMap, TheSquareIsShiftedInsideAndCutOnlyWhereLargerThanTheGrid) {
  struct Case {
    int i, j, radius, c0, r0, c1, r1;
  } cases[] = {
      {15, 15, 6, 9, 9, 20, 20},    // inside: i - r to i + r - 1
      {1, 1, 6, 0, 0, 11, 11},      // near the lower left corner
      {28, 28, 6, 18, 18, 29, 29},  // near the upper right corner
      {3, 27, 40, 0, 0, 29, 29},    // larger than the grid: the whole grid
  };
  for (const Case& k : cases) {
    int c0, r0, c1, r1;
    Trl_CoverageMap::square(terrain->height_grid(), k.i, k.j, k.radius, c0, r0, c1, r1);
    EXPECT_EQ(c0, k.c0) << k.i << "," << k.j;
    EXPECT_EQ(r0, k.r0);
    EXPECT_EQ(c1, k.c1);
    EXPECT_EQ(r1, k.r1);
  }
}

TEST_F(CoverageMap, EachCellHoldsTheLossOnTheFirstLineThatReachesIt) {
  struct Case {
    int station_col, station_row, radius;
    bool in_buildings;
    int col, row;
    bool reached;
  } cases[] = {
      {1, 1, 6, true, 2, 1, true},       // next to the base station: a profile of one cell
      {1, 1, 6, true, 11, 11, true},     // far: the corner of the shifted square
      {1, 1, 6, true, 9, 9, true},       // behind the block at 6..7, 6..7
      {1, 1, 6, true, 7, 7, true},       // inside a building, asked for
      {1, 1, 6, false, 7, 7, false},     // the same building with "NO"
      {1, 1, 6, false, 2, 4, true},      // an open cell with "NO", past the block's corner
      {1, 1, 6, true, 9, 7, true},       // lines that pass a building or not: the first decides
      {1, 1, 6, true, 1, 1, false},      // the base station's own cell
      {24, 15, 4, true, 27, 15, false},  // a border cell beyond the clutter adds nothing
      {24, 15, 4, true, 26, 16, false},  // nor do cells only its lines would reach
      {24, 15, 4, true, 24, 18, true},   // the top border inside the clutter
  };
  for (const Case& k : cases) {
    const Trl_Tx tx = station(k.station_col, k.station_row);
    CoverageSquare s;
    Trl_CoverageMap::square(terrain->height_grid(), tx.cell_i, tx.cell_j, k.radius, s.c0, s.r0, s.c1, s.r1);
    Trl_XiaBertoni fan_model = model(), line_model = model();
    Trl_CoverageMap map(*terrain, fan_model, tx, user, k.in_buildings);
    Trl_CoverageRaster* raster = map.compute(s.c0, s.r0, s.c1, s.r1, [](double) {});
    const double value = raster->value(k.col - s.c0, k.row - s.r0);
    const double expected = loss_by_first_line(*terrain, line_model, tx, user, s, k.col, k.row, k.in_buildings);
    EXPECT_EQ(value != 0, k.reached) << k.col << "," << k.row;
    EXPECT_NEAR(value, expected, 1e-9) << k.col << "," << k.row;
    EXPECT_EQ(raster->grid.x0, s.c0 * 10.0);
    EXPECT_EQ(raster->grid.nx, static_cast<unsigned>(s.c1 - s.c0 + 1));
    raster->release();
  }
}

TEST_F(CoverageMap, EveryCellOfASquareAgreesWithItsFirstLine) {
  // Lines of up to three buildings, flat ones among them, by both street averages, from a
  // street and from a roof.
  for (const Trl_Tx& tx : {station(1, 1), station(6, 6)})
  for (bool geometric : {true, false})
    for (bool in_buildings : {true, false}) {
      const CoverageSquare s{0, 0, 15, 15};
      Trl_XiaBertoni fan_model = model(geometric), line_model = model(geometric);
      Trl_CoverageMap map(*terrain, fan_model, tx, user, in_buildings);
      Trl_CoverageRaster* raster = map.compute(s.c0, s.r0, s.c1, s.r1, [](double) {});
      for (int c = s.c0; c <= s.c1; ++c)
        for (int r = s.r0; r <= s.r1; ++r)
          EXPECT_NEAR(raster->value(c, r), loss_by_first_line(*terrain, line_model, tx, user, s, c, r, in_buildings),
                      1e-9)
              << c << "," << r << (geometric ? " geo" : " avg") << (in_buildings ? " YES" : " NO");
      raster->release();
    }
}

// A building partly below the ground line: its low cells count 0, not less.
TEST(ProfileRuns, CellsBelowTheGroundLineAddNothingToTheHeightSum) {
  const double heights[] = {0, 5, -3, 4, 0};
  Trl_TxBitvector bits(5, true);
  for (int k = 1; k <= 3; ++k) bits.set(k);
  Trl_ProfileRuns line;
  line.index(heights, bits, 5);
  ASSERT_EQ(line.runs.size(), 1u);
  EXPECT_EQ(line.height_sum(line.runs[0], 0, 0), 9);
  EXPECT_EQ(line.height_sum(line.runs[0], -1, 0.5), 5.5 + 0 + 3.5);  // -3 + 1 - 1 < 0 counts 0
}

}  // namespace
