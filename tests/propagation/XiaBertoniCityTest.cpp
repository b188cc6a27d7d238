// The sample city made by celvane-citygen, its base stations and mobile users read by the
// planner's own readers, then "Compute Assignment" and "Simple search algorithm" with the
// default propagation model (the Xia-Bertoni model over the terrain). Each report is checked
// against the link equations worked out here from a table of gains that a second model fills
// in a plain double loop.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_XiaBertoni.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assignment.h"
#include "support/LinkEquations.h"
#include "support/TestFolder.h"
#include "toolkit/directory.h"

namespace {

class XiaBertoniCity : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("celvane_xb_city").string();
    std::filesystem::remove_all(dir);
    std::filesystem::create_directories(dir);
    const std::string generator = std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen";
    ASSERT_EQ(std::system((generator + " --out " + dir).c_str()), 0);
    ASSERT_EQ(p.propagation_model, 1);
    p.terrain = new Trl_Terrain;
    testing::internal::CaptureStdout();
    p.terrain->load(tk::to_drive_path(dir + "/terrain.map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
    testing::internal::GetCapturedStdout();
    ASSERT_TRUE(p.terrain->loaded());
    // The readers as the load commands use them: base stations at the height over ground,
    // users at the user height, each user with its cell on the terrain.
    const Trl_Tx templ(tk::d3_point(0, 0, p.tx_height_ground), tk::string(""), -1, p.tx_max_power,
                       p.tx_pilot_power, p.tx_max_channel_power, p.tx_gain, p.tx_noise_factor, p.orthogonality,
                       Trl_Tx::usable);
    std::ifstream in(dir + "/bs.dtx");
    tk::point low, high;
    ASSERT_TRUE(Trl_Tx::read_list(in, templ, p.tx_list, low, high));
    const Trl_Rx user(tk::d3_point(0, 0, p.rx_height), 1, p.ebno_down, p.ebno_up, p.rx_noise_factor,
                      p.rx_max_power, p.rx_min_power, p.rx_gain, p.rx_activity, p.rate_down, p.rate_up, 0);
    std::ifstream users(dir + "/mu.drx");
    int ignored = 0;
    ASSERT_TRUE(Trl_Rx::read_list(users, user, p.terrain, p.rx_list, low, high, ignored));
    EXPECT_EQ(ignored, 0);
    ASSERT_EQ(p.tx_list.size(), 40);
    ASSERT_EQ(p.rx_list.size(), 400);
  }
  void TearDown() override { std::filesystem::remove_all(dir); }

  // The gains by a second model in a plain double loop, each base station on its cell,
  // row k for the k-th base station of the list.
  std::vector<std::vector<double>> second_model_gains(const tk::list<Trl_Tx>& list) {
    Trl_XiaBertoni model(p.terrain, p.frequency, p.max_cell_radius, p.height_tolerance, p.geometric_average,
                         p.lmsd_linear, p.lmsd_exponent, p.far_pathloss_constant, p.far_pathloss_factor,
                         p.indoor_attenuation);
    std::vector<std::vector<double>> G;
    for (Trl_Tx tx : list) {
      tx.set_cell(p.terrain->height_grid());
      G.emplace_back(p.rx_list.size());
      for (const Trl_Rx& rx : p.rx_list) G.back()[rx.number] = model.gain(tx, rx);
    }
    return G;
  }

  std::string dir;
  Trl_Planner p;
};

}  // namespace

TEST_F(XiaBertoniCity, ComputeAssignmentOnTheSampleCityMeetsTheLinkEquations) {
  tk::list<Trl_Tx> working;
  int fixed = 0;
  ASSERT_TRUE(p.compute_all(working, fixed, nullptr)) << "no assignment with all base stations";
  ASSERT_NE(p.assignment, nullptr);
  std::stringstream report_text;
  report_text << *p.assignment;
  const StoredReport report = parse_report(report_text);

  const int m = working.size(), n = p.rx_list.size();
  const std::vector<std::vector<double>> G = second_model_gains(working);
  int differ = 0;
  for (int t = 0; t < m; ++t)
    for (int r = 0; r < n; ++r) {
      const double table = p.assigner.path_gain(t, r);
      differ += std::memcmp(&table, &G[t][r], sizeof table) != 0;
    }
  EXPECT_EQ(differ, 0);

  ASSERT_EQ(static_cast<int>(report.server.size()), n);
  ASSERT_EQ(static_cast<int>(report.tx_up.size()), m);
  EXPECT_EQ(report.tx_used, m);
  // Without fixed base stations the working order is the list order: positions are numbers.
  expect_link_equations(report, G, p.rx_max_power, p.tx_max_power, p.tx_max_channel_power);
  int serving_stations = 0;
  for (double up : report.tx_up) serving_stations += up > 0;
  EXPECT_GE(serving_stations, 2) << "the plan tests little when one station serves all";
}

// The search on the sample city without a window: nobody can stop it, and its best set is
// left as the current assignment for "Store assignment".
TEST_F(XiaBertoniCity, SimpleSearchOnTheSampleCityMeetsTheLinkEquations) {
  testing::internal::CaptureStdout();
  p.simple_search_command();
  const std::string out = testing::internal::GetCapturedStdout();
  ASSERT_NE(p.assignment, nullptr);
  EXPECT_NE(out.find("power sum: "), std::string::npos) << "the search found nothing better than all 40";
  std::stringstream report_text;
  report_text << *p.assignment;
  const StoredReport report = parse_report(report_text);
  EXPECT_LT(report.tx_used, 40);
  EXPECT_GT(report.tx_used, 0);
  // The list is in working order now, numbered by position, and none is fixed.
  int k = 0;
  for (const Trl_Tx& tx : p.tx_list) {
    EXPECT_EQ(tx.number, k++);
    EXPECT_TRUE(tx.status == Trl_Tx::used || tx.status == Trl_Tx::unused);
  }
  expect_link_equations(report, second_model_gains(p.tx_list), p.rx_max_power, p.tx_max_power,
                        p.tx_max_channel_power);
  // The marks follow the stations in use.
  const std::vector<int> in_use = stations_in_use(report);
  k = 0;
  for (const Trl_Tx& tx : p.tx_list) {
    const bool used = std::find(in_use.begin(), in_use.end(), k++) != in_use.end();
    EXPECT_EQ(tx.status, used ? Trl_Tx::used : Trl_Tx::unused) << tx.number;
  }
}
