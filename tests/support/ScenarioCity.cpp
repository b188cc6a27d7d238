#include "support/ScenarioCity.h"

#include <gtest/gtest.h>

#include <fstream>

#include "app/Trl_Planner.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

std::string scenario_city_folder() { return std::string(CELVANE_SOURCE_DIR) + "/tests/scenarios/data"; }

void load_scenario_city(Trl_Planner& p, const std::string& folder) {
  p.terrain = new Trl_Terrain;
  testing::internal::CaptureStdout();
  p.terrain->load(tk::to_drive_path(folder + "/terrain.map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(p.terrain->loaded());
  std::ifstream stations(folder + "/bs.dtx");
  ASSERT_TRUE(Trl_Tx::read_list(stations, p.tx_template(), p.tx_list, p.tx_box_min, p.tx_box_max));
  std::ifstream users(folder + "/mu.drx");
  int ignored = 0;
  ASSERT_TRUE(Trl_Rx::read_list(users, p.rx_template(), p.terrain, p.rx_list, p.rx_box_min, p.rx_box_max, ignored));
  EXPECT_EQ(ignored, 0);
}

std::vector<std::vector<double>> computed_gains(Trl_Planner& p, tk::list<Trl_Tx>& working) {
  int fixed = 0;
  EXPECT_TRUE(p.compute_all(working, fixed, nullptr));
  const int m = working.size(), n = p.rx_list.size();
  std::vector<std::vector<double>> gain(m, std::vector<double>(n));
  for (int k = 0; k < m; ++k)
    for (int r = 0; r < n; ++r) gain[k][r] = p.assigner.path_gain(k, r);
  return gain;
}
