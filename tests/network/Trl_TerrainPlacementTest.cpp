// Base stations and mobile users on a terrain: the reader drops users off the terrain,
// the generators place on it, the base stations on roofs.
#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "network/Trl_RandomRegion.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "raster/RasterFiles.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

short roof(unsigned c, unsigned r) { return static_cast<short>(10 + c + 2 * r); }

// A terrain of 10 by 10 cells of 10 m, nodes from 0 to 90 m in x and y, whose clutter has
// buildings in column 3 (x = 30 m) only.
class Terrain100m : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("celvane_radio_terrain");
    fs::remove_all(dir);
    fs::create_directories(dir);
    raster_files::write_map((dir / "t.map").string(), 10, 10, roof,
                            "xlc 0 ylc 0 gridsize 10 minimum 0 maximum 999");
    std::ostringstream urb;
    urb << "# run length coded urban cluttering, (C) 2001, Tarnwick Radio Labs\n"
        << "0 0 10\n10 10\n0 3 1 6\n";
    for (int r = 1; r < 10; ++r) urb << "2\n";
    raster_files::write_text((dir / "t.urb").string(), urb.str());
    testing::internal::CaptureStdout();
    terrain.load(tk::to_drive_path((dir / "t.map").string()), [](const tk::string&) {});
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(terrain.loaded());
    ASSERT_FALSE(terrain.is_open(3, 4));
    ASSERT_TRUE(terrain.is_open(4, 4));
  }
  void TearDown() override { fs::remove_all(dir); }
  fs::path dir;
  Trl_Terrain terrain;
};

Trl_Rx user_template() {
  return Trl_Rx(tk::d3_point(0, 0, 1.5), 1, 10, 3.5, 8, 0.2, 1e-11, 0.5, 0.66, 12.2, 12.2, 0);
}

}  // namespace

TEST_F(Terrain100m, ReaderDropsUsersOffTheTerrain) {
  // The terrain covers -5 to 95 m. Users 1 and 3 lie outside.
  std::istringstream in("10 12 14\n11 -6 50\n12 95 95\n13 50 200\n14 41 79\n");
  tk::list<Trl_Rx> list;
  tk::point low, high;
  int ignored = -1;
  ASSERT_TRUE(Trl_Rx::read_list(in, user_template(), &terrain, list, low, high, ignored));
  EXPECT_EQ(ignored, 2);
  ASSERT_EQ(list.size(), 3);
  const int numbers[] = {0, 2, 4}, columns[] = {1, 9, 4}, rows[] = {1, 9, 8};
  int k = 0;
  for (const Trl_Rx& rx : list) {
    EXPECT_EQ(rx.number, numbers[k]);  // the place in the file: gaps stay
    EXPECT_EQ(rx.cell_i, columns[k]);
    EXPECT_EQ(rx.cell_j, rows[k]);
    ++k;
  }
  // The box takes in the ignored users too.
  EXPECT_EQ(low.xcoord(), -6);
  EXPECT_EQ(high.ycoord(), 200);
}

TEST_F(Terrain100m, UniformUsersStayOnTheTerrainAndInTheStreets) {
  Trl_RandomRegion region(-100, 200, -100, 200, 60);  // larger than the terrain
  tk::list<Trl_Rx> list;
  Trl_Rx::generate(list, user_template(), region, true, &terrain);
  ASSERT_EQ(list.size(), 60);
  int k = 0;
  for (const Trl_Rx& rx : list) {
    EXPECT_EQ(rx.number, k++);
    EXPECT_TRUE(terrain.contains(tk::point(rx.position.xcoord(), rx.position.ycoord())));
    EXPECT_NE(rx.cell_i, 3) << "a street user on a building cell";
    EXPECT_EQ(rx.cell_i, terrain.height_grid().column_of(tk::point(rx.position.xcoord(), 0)));
    EXPECT_EQ(rx.position.zcoord(), 1.5);
  }
  // Streets or not: with the option off, building cells are taken too.
  Trl_RandomRegion narrow(28, 32, 0, 90, 10);  // only column 3
  tk::list<Trl_Rx> inside;
  Trl_Rx::generate(inside, user_template(), narrow, false, &terrain);
  EXPECT_EQ(inside.size(), 10);
  // A region that misses the terrain makes nobody.
  Trl_RandomRegion away(500, 600, 500, 600, 10);
  tk::list<Trl_Rx> none;
  Trl_Rx::generate(none, user_template(), away, false, &terrain);
  EXPECT_EQ(none.size(), 0);
}

TEST_F(Terrain100m, RandomStationsOnRoofs) {
  Trl_Tx templ;
  templ.position = tk::d3_point(0, 0, 35);
  Trl_RandomRegion region(-50, 150, -50, 150, 20);
  tk::list<Trl_Tx> roofs;
  Trl_Tx::generate(roofs, templ, region, terrain, true, 5);
  ASSERT_EQ(roofs.size(), 20);
  int k = 0;
  for (const Trl_Tx& tx : roofs) {
    EXPECT_EQ(tx.number, k);
    EXPECT_EQ(std::string(tx.label.cstring()), std::string(tk::string("BS%04d", k).cstring()));
    EXPECT_EQ(tx.cell_i, 3);
    EXPECT_EQ(tx.position.zcoord(), roof(3, tx.cell_j) + 5.0);  // roof plus the height over it
    ++k;
  }
  // Without the option, a station in the street keeps the template's height over ground.
  Trl_RandomRegion street(48, 52, 0, 90, 5);  // column 5 only
  tk::list<Trl_Tx> ground;
  Trl_Tx::generate(ground, templ, street, terrain, false, 5);
  ASSERT_EQ(ground.size(), 5);
  for (const Trl_Tx& tx : ground) EXPECT_EQ(tx.position.zcoord(), 35);
}
