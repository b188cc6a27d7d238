#include <gtest/gtest.h>
#include "support/TestFolder.h"

#include <cairo.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

namespace fs = std::filesystem;

namespace {

// Plays a plan script with the real batch program in a folder holding the scenario city.
int play(const fs::path& dir, const std::string& script) {
  fs::remove_all(dir);
  fs::create_directories(dir);
  fs::copy(fs::path(CELVANE_SOURCE_DIR) / "tests/scenarios/data", dir / "data");
  std::ofstream(dir / "plan.script") << script;
  std::string command = "cd " + dir.string() + " && " + CELVANE_BINARY_DIR +
                        "/apps/celvane-batch --seed 1 --transcript transcript.txt plan.script > /dev/null 2>&1";
  return std::system(command.c_str());
}

struct Picture {
  int width = 0, height = 0;
  std::set<unsigned> colours;
  long grey = 0;  // pixels in the terrain's grey
};

Picture read_png(const fs::path& file) {
  Picture p;
  cairo_surface_t* s = cairo_image_surface_create_from_png(file.string().c_str());
  if (cairo_surface_status(s) != CAIRO_STATUS_SUCCESS) {
    cairo_surface_destroy(s);
    return p;
  }
  p.width = cairo_image_surface_get_width(s);
  p.height = cairo_image_surface_get_height(s);
  unsigned char* data = cairo_image_surface_get_data(s);
  int stride = cairo_image_surface_get_stride(s);
  for (int y = 0; y < p.height; ++y)
    for (int x = 0; x < p.width; ++x) {
      unsigned pixel = reinterpret_cast<unsigned*>(data + y * stride)[x] & 0xffffff;
      p.colours.insert(pixel);
      if (pixel == 0xd2d2d2) ++p.grey;
    }
  cairo_surface_destroy(s);
  return p;
}

// These depend on the batch program and the city generator being built, as scripts/test does.
TEST(CitySnapshot, ThePlanShowsTheCityAndTheRasterViewsShowItsCells) {
  fs::path dir = test_folder("celvane_city_snapshot");
  int status = play(dir,
                    "menu File/Load terrain\nfile data/terrain.map\n"
                    "menu File/Load base stations\nfile data/bs.dtx\n"
                    "snapshot plan.png\n"
                    "menu Run/Draw terrain\nclick 150 150 left\nsnapshot heights.png Celvane  -  Terrain\n"
                    "menu Run/Draw building clutter\nclick 150 150 left\nsnapshot clutter.png Celvane  -  Clutter\n"
                    "menu Exit\n");
  ASSERT_EQ(status, 0);
  Picture plan = read_png(dir / "plan.png");
  ASSERT_EQ(plan.width, 600);
  // The terrain's extent fills most of the fitted view in grey, with the base stations on it.
  EXPECT_GT(plan.grey, 600L * 600 / 2);
  EXPECT_GE(plan.colours.size(), 3u);
  Picture heights = read_png(dir / "heights.png");
  EXPECT_EQ(heights.width, 300);
  EXPECT_GE(heights.colours.size(), 5u);  // several height classes in view
  Picture clutter = read_png(dir / "clutter.png");
  // Clear cells take palette entry 1 (black), built ones entry 3 (green).
  EXPECT_EQ(clutter.colours, (std::set<unsigned>{0x000000, 0x00c800}));
}

}  // namespace
