// "Simple search algorithm" played by celvane-batch on the small scenario city (six base
// stations, thirty users, the Xia-Bertoni model over its terrain), then "Store assignment".
// The stored report must meet the link equations, and its set must be the best of all 63
// subsets, each solved here on its own and ranked by the order of solutions written out.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "search/Trl_Assignment.h"
#include "support/BatchCity.h"
#include "support/LinkEquations.h"
#include "support/ScenarioCity.h"

namespace fs = std::filesystem;

TEST(SimpleSearchCity, StoredBestSetIsTheOptimumOfAllSubsetsAndMeetsTheLinkEquations) {
  const fs::path dir = city_folder("celvane_search_city");
  std::ofstream(dir / "search.script") << "menu File/Load terrain\nfile data/terrain.map\n"
                                          "menu File/Load base stations\nfile data/bs.dtx\n"
                                          "menu File/Load mobile users\nfile data/mu.drx\n"
                                          "menu Run/Simple search algorithm\nok\n"
                                          "menu File/Store assignment\nfile as.dat\n"
                                          "menu Exit\n";
  ASSERT_EQ(play_batch(dir, "search.script"), 0) << read_file(dir / "transcript.txt");
  const std::string transcript = read_file(dir / "transcript.txt");
  std::ifstream stored(dir / "as.dat");
  const StoredReport report = parse_report(stored);

  Trl_Planner p;
  load_scenario_city(p, (dir / "data").string());
  ASSERT_EQ(p.tx_list.size(), 6);
  ASSERT_EQ(p.rx_list.size(), 30);
  tk::list<Trl_Tx> working;
  const std::vector<std::vector<double>> gain = computed_gains(p, working);
  const int m = working.size(), n = p.rx_list.size();
  ASSERT_EQ(static_cast<int>(report.tx_up.size()), m);
  expect_link_equations(report, gain, p.rx_max_power, p.tx_max_power, p.tx_max_channel_power);

  // Every subset on its own: fewer base stations win, then the strictly lower uplink sum.
  std::vector<int> best_set;
  double best_sum = 0;
  for (unsigned mask = 1; mask < (1u << m); ++mask) {
    Trl_Assignment a(p.assigner, p.rx_objective, working);
    tk::list<int> positions;
    std::vector<int> set;
    for (int k = 0; k < m; ++k)
      if (mask & (1u << k)) {
        positions.append(k);
        set.push_back(k);
      }
    a.select(positions);
    if (!a.solve(true)) continue;
    double sum = 0;
    for (int r = n - 1; r >= 0; --r) sum += a.rx_uplink[r];
    if (best_set.empty() || set.size() < best_set.size() || (set.size() == best_set.size() && sum < best_sum)) {
      best_set = set;
      best_sum = sum;
    }
  }
  ASSERT_FALSE(best_set.empty());
  EXPECT_LT(best_set.size(), 6u) << "the plan tests little when every station is needed";
  EXPECT_EQ(stations_in_use(report), best_set);
  EXPECT_NEAR(report.uplink_sum, best_sum, 1e-5 * best_sum);

  // The final panel says the same.
  const std::string said = "message: Optimum found: \\n\\red " + std::to_string(best_set.size()) +
                           " \\blue base stations and \\red ";
  const size_t at = transcript.find(said);
  ASSERT_NE(at, std::string::npos) << transcript;
  EXPECT_NEAR(std::strtod(transcript.c_str() + at + said.size(), nullptr), best_sum, 1e-6 * best_sum);
  EXPECT_NE(transcript.find(" \\blue [W] uplink power sum.\\n For more details store and see the assignment file.\n"),
            std::string::npos);
  fs::remove_all(dir);
}
