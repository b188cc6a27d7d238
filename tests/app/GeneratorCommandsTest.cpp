// The generators and the base station picker on the small city, answered by the scripted
// backend: what comes out of each generator (count, rectangle, place), which flags are
// stored, and how a change of status moves, renumbers and drops the assignment.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_RxDistribution.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assignment.h"
#include "support/ScenarioCity.h"
#include "support/ScriptedWindows.h"
#include "support/WindowedPlanner.h"

namespace {

std::vector<std::string> labels_in_order(const Trl_Planner& p) {
  std::vector<std::string> labels;
  int expected_number = 0;
  for (const Trl_Tx& tx : p.tx_list) {
    EXPECT_EQ(tx.number, expected_number++) << tx.label.str();
    labels.push_back(tx.label.str());
  }
  return labels;
}

bool inside(const tk::d3_point& q, double x0, double y0, double x1, double y1) {
  return q.xcoord() >= x0 && q.xcoord() <= x1 && q.ycoord() >= y0 && q.ycoord() <= y1;
}

}  // namespace

TEST(GeneratorCommands, GeneratedRecordsStandWhereTheFlagsSay) {
  ScriptedWindows scripted(
      "set Min. X-coordinate [m] = 200\nset Max. X-coordinate [m] = 60\nset Number of base stations = 12\npress Ok\n"
      "press Adjust\nset Number of mobile users = 25\nset Mobile users only in street = yes\npress Ok\n");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  load_scenario_city(p);
  const Trl_Terrain& t = *p.terrain;
  const Trl_Grid& g = t.height_grid();
  p.generate_tx();
  ASSERT_EQ(p.tx_list.size(), 12);
  EXPECT_EQ(p.tx_box_min, tk::point(60, 20));
  EXPECT_EQ(p.tx_box_max, tk::point(200, 980));
  int n = 0;
  for (const Trl_Tx& tx : p.tx_list) {
    EXPECT_EQ(tx.label, tk::string("BS%04d", n++));
    EXPECT_TRUE(inside(tx.position, 60, 20, 200, 980));
    // "Only on building" stands on: roof height plus the height over a building.
    ASSERT_FALSE(t.is_open(tx.cell_i, tx.cell_j));
    EXPECT_EQ(tx.position.zcoord(), t.height(tx.cell_i, tx.cell_j) + p.tx_height_building);
  }
  p.generate_uniform_rx();
  ASSERT_EQ(p.rx_list.size(), 25);
  for (const Trl_Rx& rx : p.rx_list) {
    EXPECT_TRUE(inside(rx.position, g.x0, g.y0, g.x1, g.y1));
    EXPECT_TRUE(t.is_open(rx.cell_i, rx.cell_j));
  }
  EXPECT_FALSE(p.only_in_street);  // the uniform dialog's flag stays its own
  EXPECT_TRUE(p.only_on_building);
  EXPECT_EQ(p.assignment, nullptr);
}

TEST(GeneratorCommands, DistributedUsersStoreTheirFlagAndTakeTheDistributionsBox) {
  ScriptedWindows scripted(
      "file " + scenario_city_folder() + "/mu_dis.drd\n"
      "set Activation percentage [%] = 5\nset Mobile users only in street = yes\npress Ok\n");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  load_scenario_city(p);
  p.load_distribution(1);
  ASSERT_NE(p.distribution, nullptr);
  testing::internal::CaptureStdout();
  p.generate_distributed_rx();
  testing::internal::GetCapturedStdout();
  EXPECT_TRUE(p.only_in_street);
  EXPECT_DOUBLE_EQ(p.activation, 0.05);
  EXPECT_FALSE(p.rx_list.empty());
  for (const Trl_Rx& rx : p.rx_list) EXPECT_TRUE(p.terrain->is_open(rx.cell_i, rx.cell_j));
  EXPECT_EQ(p.rx_box_min, p.distribution->min_corner());
  EXPECT_EQ(p.rx_box_max, p.distribution->max_corner());
}

TEST(GeneratorCommands, PickerMovesRenumbersAndDropsTheAssignmentOnAStatusChange) {
  // The small city's stations in file order: 0 at (100, 20), 1 at (180, 265), 4 at (40, 195).
  struct Case {
    const char* script;
    std::vector<int> order;  // file positions in list order afterwards
    bool assignment_kept;
    bool first_marked_used = false;  // station 0 marked by a search before the picker
  };
  const Case cases[] = {
      {"click 0 0 right\n", {0, 1, 2, 3, 4, 5}, true},
      {"click 181 262\nset Max. power [W] = 10\nset Height [m] = 35\npress Ok\nclick 0 0 right\n", {0, 1, 2, 3, 4, 5}, true},
      {"click 181 262\nset Status = excluded\nset Height [m] = 35\npress Ok\nclick 0 0 right\n", {0, 2, 3, 4, 5, 1}, false},
      {"click 181 262\nset Status = excluded\nset Height [m] = 35\npress Ok\nclick 40 195\nset Status = excluded\nset Height [m] = 35\npress Ok\n"
       "click 181 262\nset Status = usable\nset Height [m] = 35\npress Ok\nclick 0 0 middle\n",
       {1, 0, 2, 3, 5, 4}, false},
      {"click 181 262\npress Cancel\nclick 0 0 right\n", {0, 1, 2, 3, 4, 5}, true},
      // A status marked by a search turns usable at "Ok" and counts as a change.
      {"click 100 20\nset Height [m] = 35\npress Ok\nclick 0 0 right\n", {0, 1, 2, 3, 4, 5}, false, true},
  };
  for (const Case& c : cases) {
    ScriptedWindows scripted(c.script);
    WindowedPlanner w;
    Trl_Planner& p = w.p;
    load_scenario_city(p);
    tk::list<Trl_Tx> working;
    int fixed = 0;
    ASSERT_TRUE(p.compute_all(working, fixed, nullptr));
    if (c.first_marked_used) p.tx_list[p.tx_list.first()].status = Trl_Tx::used;
    const std::vector<std::string> before = labels_in_order(p);
    p.edit_tx();
    std::vector<std::string> expected;
    for (int k : c.order) expected.push_back(before[k]);
    EXPECT_EQ(labels_in_order(p), expected) << c.script;
    EXPECT_EQ(p.assignment != nullptr, c.assignment_kept) << c.script;
    if (c.first_marked_used) { EXPECT_EQ(p.tx_list[p.tx_list.first()].status, Trl_Tx::usable); }
  }
}
