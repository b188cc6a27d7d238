// The command "Simple search algorithm" on the planner, played through the scripted window
// backend: its refusals, the first best solution, the final panel, the marks on the list,
// and a stop asked through the window.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaSearch.h"
#include "support/ScriptedWindows.h"
#include "support/WindowedPlanner.h"

namespace {

const char* all_found = "status:  Assignment with all base stations found.\n";

// A user with the planner's figures.
Trl_Rx user(const Trl_Planner& p, double x, double y, int number) {
  return Trl_Rx(tk::d3_point(x, y, p.rx_height), number, p.ebno_down, p.ebno_up, p.rx_noise_factor, p.rx_max_power,
                p.rx_min_power, p.rx_gain, p.rx_activity, p.rate_down, p.rate_up, 0);
}

// Base stations along a street every 400 m, with the simple law; each user stands 30 m from
// the station of the same index modulo the station count.
void street(Trl_Planner& p, int stations, int users, std::vector<int> status = {}) {
  p.propagation_model = 0;
  for (int k = 0; k < stations; ++k)
    p.tx_list.append(Trl_Tx(tk::d3_point(400.0 * k, 0, p.tx_height_ground), tk::string("BS%04d", k), k,
                            p.tx_max_power, p.tx_pilot_power, p.tx_max_channel_power, p.tx_gain, p.tx_noise_factor,
                            p.orthogonality, k < static_cast<int>(status.size()) ? status[k] : 0));
  for (int r = 0; r < users; ++r) p.rx_list.append(user(p, 400.0 * (r % stations) + 30, 10.0 * r, r));
}

// The best so far is a solved assignment: every user has a server among the stations in use.
void expect_every_user_served(const Trl_Assignment& best) {
  for (int r = 0; r < best.rx_count; ++r) {
    ASSERT_GE(best.serving[r], 0);
    EXPECT_LT(best.serving[r], best.used);
  }
}

std::vector<int> statuses(const Trl_Planner& p) {
  std::vector<int> s;
  for (const Trl_Tx& tx : p.tx_list) s.push_back(tx.status);
  return s;
}

}  // namespace

TEST(SimpleSearchCommand, RefusalsLeaveThePlanAsItWas) {
  struct Case {
    int stations, users;
    std::vector<int> status;
    bool far_user;  // one more user 100 km away: no power reaches it
    std::string said;
    int kept;  // base stations in the assignment kept: 0 none, -1 not looked at
  };
  const Case cases[] = {
      {0, 0, {}, false, "message: No base stations or mobile users. Nothing to do?\n", 0},
      {2, 2, {}, true, "message: No assignment with all base stations possible.\n", -1},
      // Every station fixed: the full set is computed and kept, the walk never starts.
      {3, 6, {3, 3, 3}, false, std::string(all_found) + "message: All base stations are fixed. Nothing to do?\n", 3},
  };
  for (const Case& c : cases) {
    ScriptedWindows scripted("");
    WindowedPlanner w;
    Trl_Planner& p = w.p;
    if (c.stations > 0) street(p, c.stations, c.users, c.status);
    if (c.far_user) p.rx_list.append(user(p, 1e5, 0, c.users));
    p.simple_search_command();
    EXPECT_EQ(scripted.transcript(), c.said);
    EXPECT_EQ(statuses(p), c.status.empty() ? std::vector<int>(c.stations, 0) : c.status);
    if (c.kept == 0) { EXPECT_EQ(p.assignment, nullptr); }
    if (c.kept > 0) {
      ASSERT_NE(p.assignment, nullptr);
      EXPECT_EQ(p.assignment->used, c.kept);
    }
  }
}

// "GA": the genetic search runs its generations, shows the best after each, and can't claim
// an optimum.
TEST(SimpleSearchCommand, GeneticSearchEndsWithTheBestSoFar) {
  ScriptedWindows scripted("");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  street(p, 5, 10);
  p.algorithm = 1;
  const Trl_GaSearch saved = ga_search;
  ga_search.generations = 4;
  ga_search.population_size = 8;
  Trl_GaSearch::fix_seed(1);
  testing::internal::CaptureStdout();
  p.simple_search_command();
  testing::internal::GetCapturedStdout();
  const float mutation = ga_search.mutation_probability;
  ga_search = saved;
  EXPECT_FLOAT_EQ(mutation, 1 / (1.5f * 5));
  ASSERT_NE(p.assignment, nullptr);
  const Trl_Assignment& best = *p.assignment;
  const std::string t = scripted.transcript();
  EXPECT_EQ(t.rfind(all_found, 0), 0u) << t;
  EXPECT_NE(t.find(" Tx, "), std::string::npos) << t;
  EXPECT_NE(t.find(" [W] (4 generations).\n"), std::string::npos) << t;
  EXPECT_EQ(t.find(" [W] (5 generations)."), std::string::npos) << t;
  EXPECT_EQ(t.find("Optimum found"), std::string::npos) << t;
  EXPECT_NE(t.find("message: Best solution found so far: \\n\\red " + std::to_string(best.used) + " \\blue"),
            std::string::npos)
      << t;
  expect_every_user_served(best);
}

TEST(SimpleSearchCommand, OptimumIsMarkedOnTheListWithTheFixedOnesKept) {
  ScriptedWindows scripted("");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  // Users only near stations 0 and 2 of four; station 3 is fixed, station 1 was marked by
  // an earlier search.
  street(p, 4, 0, {0, 1, 0, 3});
  for (int r = 0; r < 8; ++r) p.rx_list.append(user(p, r % 2 ? 830 : 30, 10.0 * r, r));
  p.max_stagnation = 0;  // no limit: the walk runs out and proves its best
  testing::internal::CaptureStdout();
  p.simple_search_command();
  const std::string out = testing::internal::GetCapturedStdout();
  ASSERT_NE(p.assignment, nullptr);
  // The fixed station stays in; the fewest that can serve both groups is one station
  // reaching both, or two: every result has to keep station 3.
  const Trl_Assignment& best = *p.assignment;
  std::vector<int> in_use;
  for (int i = 0; i < best.tx_count; ++i)
    if (best.selected[i]) in_use.push_back(best.tx_numbers[i]);
  EXPECT_NE(std::find(in_use.begin(), in_use.end(), 3), in_use.end());
  std::vector<int> expected_marks(4);
  for (int k = 0; k < 4; ++k)
    expected_marks[k] = k == 3 ? 3 : (std::find(in_use.begin(), in_use.end(), k) != in_use.end() ? 1 : 2);
  EXPECT_EQ(statuses(p), expected_marks);
  EXPECT_LT(best.used, 4);
  const std::string t = scripted.transcript();
  EXPECT_EQ(t.rfind(all_found, 0), 0u) << t;
  const std::string final_panel = "message: Optimum found: \\n\\red " + std::to_string(best.used) +
                                  " \\blue base stations and \\red ";
  EXPECT_NE(t.find(final_panel), std::string::npos) << t;
  EXPECT_NE(t.find(" \\blue [W] uplink power sum.\\n For more details store and see the assignment file.\n"),
            std::string::npos);
  // Each improvement: a "power sum: " line and its status line.
  EXPECT_NE(out.find("power sum: "), std::string::npos);
  EXPECT_NE(t.find("status:  Best assignment: " + std::to_string(best.used) + " BS, "), std::string::npos) << t;
}

void search_command() { planner.simple_search_command(); }

// The stop poll asks the program's one planner, as the menu command does.
TEST(SimpleSearchCommand, StopThroughTheWindowEndsWithTheBestSoFar) {
  ScriptedWindows scripted("stop after 1\nmenu Search\nyes\n");
  CommandOnBar bar("Search", search_command);
  Trl_Planner& p = planner;
  street(p, 6, 12);
  const std::string out = bar.run();
  const std::string t = scripted.transcript();
  // One candidate was tried, then the question came once.
  const size_t asked = t.find("confirm: Do you want to stop the search? -> yes\n");
  ASSERT_NE(asked, std::string::npos) << t;
  EXPECT_EQ(t.find("confirm:", asked + 1), std::string::npos) << t;
  ASSERT_NE(p.assignment, nullptr);
  const Trl_Assignment& best = *p.assignment;
  EXPECT_NE(t.find("message: Best solution found so far: \\n\\red " + std::to_string(best.used) + " \\blue"),
            std::string::npos)
      << t;
  EXPECT_NE(t.find(" For more details store and examine the assignment file.\n"), std::string::npos);
  // At most the one candidate can have improved on the full set.
  const size_t first = t.find("status:  Best assignment: ");
  EXPECT_EQ(best.used < 6, first != std::string::npos) << t;
  if (first != std::string::npos) {
    EXPECT_EQ(t.find("status:  Best assignment: ", first + 1), std::string::npos) << t;
    EXPECT_EQ(out, "power sum: " + [&] { std::ostringstream s; s << best.uplink_sum; return s.str(); }() + "\n");
  }
  expect_every_user_served(best);
  for (int r = 0; r < best.rx_count; ++r) EXPECT_GT(best.rx_uplink[r], 0);
}

TEST(SimpleSearchCommand, GeneticSearchStopsBetweenGenerations) {
  ScriptedWindows scripted("stop after 2\nmenu Search\nyes\n");
  CommandOnBar bar("Search", search_command);
  Trl_Planner& p = planner;
  street(p, 6, 12);
  p.algorithm = 1;
  Trl_GaSearch::fix_seed(1);
  const std::string out = bar.run();
  const std::string t = scripted.transcript();
  // The first poll comes before the first generation, the second after it; one question.
  EXPECT_EQ(t.find("confirm:"), t.rfind("confirm:")) << t;
  EXPECT_EQ(out.rfind("power sum: ", 0), 0u) << "the first generation improved on the full set";
  EXPECT_NE(t.find("confirm: Do you want to stop the search? -> yes\nmessage: Best solution found so far: "),
            std::string::npos)
      << t;
  ASSERT_NE(p.assignment, nullptr);
  expect_every_user_served(*p.assignment);
}
