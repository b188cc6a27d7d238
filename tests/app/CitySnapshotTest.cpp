#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "support/BatchCity.h"
#include "support/Png.h"

namespace fs = std::filesystem;

namespace {

// These depend on the batch program and the city generator being built, as scripts/test does.
TEST(CitySnapshot, ThePlanShowsTheCityAndTheRasterViewsShowItsCells) {
  const fs::path dir = city_folder("celvane_city_snapshot");
  std::ofstream(dir / "plan.script")
      << "menu File/Load terrain\nfile data/terrain.map\nmenu File/Load base stations\nfile data/bs.dtx\n"
         "snapshot plan.png\n"
         "menu Run/Draw terrain\nclick 150 150 left\nsnapshot heights.png Celvane  -  Terrain\n"
         "menu Run/Draw building clutter\nclick 150 150 left\nsnapshot clutter.png Celvane  -  Clutter\n"
         "menu Exit\n";
  ASSERT_EQ(play_batch(dir, "plan.script"), 0);
  const Picture plan = read_png(dir / "plan.png");
  ASSERT_EQ(plan.width, 600);
  // The terrain's extent fills most of the fitted view in grey, with the base stations on it.
  EXPECT_GT(std::count(plan.pixels.begin(), plan.pixels.end(), 0xd2d2d2u), 600L * 600 / 2);
  EXPECT_GE(plan.colours().size(), 3u);
  const Picture heights = read_png(dir / "heights.png");
  EXPECT_EQ(heights.width, 300);
  EXPECT_GE(heights.colours().size(), 5u);  // several height classes in view
  // Clear cells take palette entry 1 (black), built ones entry 3 (green).
  EXPECT_EQ(read_png(dir / "clutter.png").colours(), (std::set<unsigned>{0x000000, 0x00c800}));
}

}  // namespace
