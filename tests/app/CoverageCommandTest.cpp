// "Draw pathloss coverage" as a planner runs it: the coverage scenario is played with the
// batch program, and every cell its pointer reads (height, building bit, path loss) is
// worked out here from the rasters and the model on the first line that reaches the cell.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "app/Trl_Planner.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Terrain.h"
#include "support/BatchCity.h"
#include "support/CoverageByLines.h"
#include "support/Png.h"
#include "support/ScenarioCity.h"
#include "toolkit/string.h"

namespace fs = std::filesystem;

namespace {

// The script's city with the planner's defaults: the base station picked at (100, 125) is
// the one at (105, 130); with a radius beyond the terrain the square is the whole grid.
class CoverageCommand : public testing::Test {
 protected:
  void SetUp() override {
    load_scenario_city(p);
    tx = p.tx_list[Trl_Tx::nearest(p.tx_list, tk::point(100, 125))];
    tx.set_cell(p.terrain->height_grid());
  }

  // The text a 300 pixel window of the whole 60 by 60 grid shows at a pixel.
  std::string expected_text(const std::string& title, int px, int py) {
    const Trl_Terrain& t = *p.terrain;
    const int col = px * 60 / 300, row = py * 60 / 300;
    const double x = col * 5.0, y = row * 5.0;
    if (title == "Celvane  -  Terrain") return tk::string("  %g,%g,%g  ", x, y, double(t.height(col, row))).str();
    if (title == "Celvane  -  Clutter") return tk::string("  %.8g,%.8g,%d  ", x, y, t.is_open(col, row) ? 0 : 1).str();
    Trl_XiaBertoni model(p.terrain, p.frequency, p.max_cell_radius, p.height_tolerance, p.geometric_average,
                         p.lmsd_linear, p.lmsd_exponent, p.far_pathloss_constant, p.far_pathloss_factor,
                         p.indoor_attenuation);
    const Trl_Rx user(tk::d3_point(0, 0, p.rx_height), 1, p.ebno_down, p.ebno_up, p.rx_noise_factor, p.rx_max_power,
                      p.rx_min_power, p.rx_gain, p.rx_activity, p.rate_down, p.rate_up, 0);
    const double loss = loss_by_first_line(t, model, tx, user, CoverageSquare{0, 0, 59, 59}, col, row, false);
    return tk::string("  %5.1f dB  ", loss).str();
  }

  Trl_Planner p;
  Trl_Tx tx;
};

TEST_F(CoverageCommand, ThePointerReadsTheHeightTheBuildingBitAndTheLossOfTheCell) {
  const fs::path dir = city_folder("celvane_coverage_command");
  EXPECT_EQ(play_batch(dir, std::string(CELVANE_SOURCE_DIR) + "/tests/scenarios/coverage.script"), 0);
  std::istringstream transcript(read_file(dir / "transcript.txt"));
  std::string line, text;
  int checked = 0;
  while (std::getline(transcript, line)) {
    if (line.rfind("point: ", 0) != 0) continue;
    std::istringstream step(line.substr(7));
    int px, py;
    step >> px >> py;
    std::string title;
    std::getline(step >> std::ws, title);
    ASSERT_TRUE(std::getline(transcript, text)) << line;
    EXPECT_EQ(text, "  text: \"" + expected_text(title, px, py) + "\"") << line;
    ++checked;
  }
  EXPECT_EQ(checked, 12);
  // The legend's classes in the picture: unreached cells, several loss classes, the text.
  EXPECT_GE(read_png(dir / "coverage.png").colours().size(), 8u);
  fs::remove_all(dir);
}

}  // namespace
