#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "app/Trl_Main.h"
#include "app/Trl_Planner.h"
#include "support/ScriptedWindows.h"
#include "support/WindowedPlanner.h"
#include "toolkit/random_source.h"
#include "toolkit/window.h"

namespace {

TEST(PlannerDefaults, HoldTheLinearValuesOfTheDialogDefaults) {
  Trl_Planner p;
  EXPECT_NEAR(10 * std::log10(p.ebno_up), 5.5, 1e-12);
  EXPECT_NEAR(10 * std::log10(p.rx_max_power) + 30, 21.0, 1e-12);  // dBmW
  EXPECT_NEAR(p.rx_min_power, 1e-8, 1e-20);                         // -50 dBmW
  EXPECT_NEAR(p.tx_gain, 7.943282347242815, 1e-12);                 // 9 dBi
  EXPECT_NEAR(p.rx_gain, 0.5011872336272722, 1e-12);                // -3 dBi
  EXPECT_NEAR(p.tolerance, 1.0069316688518042, 1e-15);              // 0.03 dB
  EXPECT_EQ(p.indoor_attenuation, 15.8493192);                      // kept as stored, not 10^1.2
  EXPECT_EQ(p.max_iterations, 100);
  EXPECT_EQ(p.max_stagnation, 7);
  EXPECT_EQ(p.spare_count, 5);
  EXPECT_EQ(p.propagation_model, 1);
  EXPECT_EQ(p.rx_objective, 1);
  EXPECT_TRUE(p.only_on_building);
  EXPECT_FALSE(p.only_in_street);
  EXPECT_EQ(p.wang_b, 1.0);
  EXPECT_EQ(p.window, nullptr);
  EXPECT_EQ(p.assignment, nullptr);
  // The remembered names start in the starting directory with their stems.
  EXPECT_EQ(p.tx_file.name + p.tx_file.extension, tk::string("bs.dtx"));
  EXPECT_EQ(p.terrain_file.name + p.terrain_file.extension, tk::string("terrain.map"));
  EXPECT_EQ(p.distribution_file.name + p.distribution_file.extension, tk::string("mu_dis.drd"));
  EXPECT_EQ(p.assignment_file.directory, p.start_dir.directory);
  EXPECT_EQ(p.start_dir.name, tk::string(""));
}

TEST(PlannerWithoutWindow, AsksNothingAndShowsNothing) {
  Trl_Planner p;
  p.message("not seen");
  EXPECT_FALSE(p.confirm("Do you want to stop the search?"));
  p.show_status(" Reading base station file ");
  EXPECT_FALSE(p.status_shown);
  tk::point where;
  EXPECT_FALSE(p.pick_point(" Select base station! (Right button to BREAK)", where));
  p.fit_view();
  p.redraw();
}

TEST(PlannerWithWindow, BracketStatusAndPick) {
  ScriptedWindows scripted("click 50 50 left\nclick 10 10 right\n");
  WindowedPlanner w(0, 100, 0);
  Trl_Planner& p = w.p;
  p.begin_command();
  EXPECT_FALSE(p.window->panel_enabled());
  p.show_status(" Reading base station file C:/plan/bs.dtx");
  EXPECT_TRUE(p.status_shown);
  EXPECT_TRUE(p.window->status_open());
  p.end_command();
  EXPECT_TRUE(p.window->panel_enabled());
  p.idle();
  EXPECT_FALSE(p.status_shown);
  EXPECT_FALSE(p.window->status_open());
  tk::point where;
  EXPECT_TRUE(p.pick_point(" Select base station! (Right button to BREAK)", where));
  EXPECT_NEAR(where.xcoord(), 50, 0.2);
  EXPECT_FALSE(p.status_shown);  // pick_point runs the idle step
  EXPECT_FALSE(p.pick_point(" Select base station! (Right button to BREAK)", where));
  EXPECT_EQ(scripted.transcript(),
            "status:  Reading base station file C:/plan/bs.dtx\n"
            "status:  Select base station! (Right button to BREAK)\nclick: 50 50 left\n"
            "status:  Select base station! (Right button to BREAK)\nclick: 10 10 right\n");
}

std::vector<bool> stop_answers;
void poll_three_times() {
  for (int i = 0; i < 3; ++i) stop_answers.push_back(stop_requested());
}

TEST(StopRequested, AsksOnlyWhenAClickWaitsInTheMainWindow) {
  EXPECT_FALSE(stop_requested());  // no window: nobody can ask
  ScriptedWindows scripted("stop after 2\nmenu Search\nyes\n");
  CommandOnBar bar("Search", poll_three_times);
  bar.run();
  EXPECT_EQ(stop_answers, (std::vector<bool>{false, true, false}));
  EXPECT_EQ(scripted.transcript(), "menu: Search\nconfirm: Do you want to stop the search? -> yes\n");
}

TEST(FixPlannerSeed, RenewsTheSourcesOfTheRegionsBuiltBeforeTheSeed) {
  fix_planner_seed(7);
  // After the seed the n-th source made is seeded with 7 n: the four region sources come first.
  tk::random_source expected[4] = {tk::random_source(7u), tk::random_source(14u), tk::random_source(21u),
                                   tk::random_source(28u)};
  tk::random_source* renewed[4] = {&planner.rx_region.x_source, &planner.rx_region.y_source,
                                   &planner.tx_region.x_source, &planner.tx_region.y_source};
  for (int k = 0; k < 4; ++k)
    for (int draw = 0; draw < 5; ++draw) EXPECT_EQ(renewed[k]->next(), expected[k].next()) << k;
  tk::random_source::release_seed();
}

TEST(ShownPath, TurnsBackslashesIntoSlashes) {
  EXPECT_EQ(Trl_Planner::shown_path("C:\\data\\bs.dtx"), tk::string("C:/data/bs.dtx"));
}

}  // namespace
