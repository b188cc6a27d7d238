// "Simple search algorithm" with "GA" played by celvane-batch on the small scenario city.
// Two runs with one seed give the same transcript and report; the stored report meets the
// link equations; a stop between generations ends with the best so far, which meets them
// too. The base station counts of the genetic and the simple search are printed side by side.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "support/LinkEquations.h"
#include "support/BatchCity.h"
#include "support/ScenarioCity.h"

namespace fs = std::filesystem;

namespace {

const char* load_city =
    "menu File/Load terrain\nfile data/terrain.map\n"
    "menu File/Load base stations\nfile data/bs.dtx\n"
    "menu File/Load mobile users\nfile data/mu.drx\n";

std::string search_with(const char* algorithm) {
  return std::string("menu Set/Search parameters\nset Number of generations = 8\nset Population size = 10\n") +
         "set Algorithm = " + algorithm + "\npress Ok\n";
}

// Plays the script in the folder and returns the transcript.
std::string play(const fs::path& dir, const std::string& name, const std::string& steps) {
  std::ofstream(dir / (name + ".script")) << steps;
  EXPECT_EQ(play_batch(dir, name + ".script", name + ".txt"), 0) << read_file(dir / (name + ".txt"));
  return read_file(dir / (name + ".txt"));
}

// The stored report against the link equations, with gains from a planner of its own.
StoredReport checked_report(const fs::path& report_file, const fs::path& data) {
  std::ifstream stored(report_file);
  const StoredReport report = parse_report(stored);
  Trl_Planner p;
  load_scenario_city(p, data.string());
  tk::list<Trl_Tx> working;
  const std::vector<std::vector<double>> gain = computed_gains(p, working);
  EXPECT_EQ(static_cast<int>(report.tx_up.size()), working.size());
  expect_link_equations(report, gain, p.rx_max_power, p.tx_max_power, p.tx_max_channel_power);
  return report;
}

}  // namespace

TEST(GaSearchCity, SeededRunsRepeatAndTheStoredSetsMeetTheLinkEquations) {
  const fs::path dir = city_folder("celvane_ga_city");
  const std::string ga = std::string(load_city) + search_with("GA") +
                         "menu Run/Simple search algorithm\nok\nmenu File/Store assignment\nfile ga.dat\n";
  const std::string steps = ga + search_with("HBB") +
                            "menu Run/Simple search algorithm\nok\nmenu File/Store assignment\nfile hbb.dat\nmenu Exit\n";
  const std::string first = play(dir, "first", steps);
  const std::string first_report = read_file(dir / "ga.dat");
  EXPECT_EQ(play(dir, "second", steps), first);
  EXPECT_EQ(read_file(dir / "ga.dat"), first_report);
  EXPECT_NE(first.find("message: Best solution found so far: "), std::string::npos) << first;
  EXPECT_NE(first.find(" Tx, "), std::string::npos) << first;
  EXPECT_FALSE(fs::exists(dir / "statistics.ga")) << "statistics stay off";
  const StoredReport by_ga = checked_report(dir / "ga.dat", dir / "data");
  const StoredReport by_hbb = checked_report(dir / "hbb.dat", dir / "data");
  std::cout << "sample city: genetic search " << stations_in_use(by_ga).size() << " base stations, "
            << by_ga.uplink_sum << " W; simple search " << stations_in_use(by_hbb).size() << " base stations, "
            << by_hbb.uplink_sum << " W\n";

  // A click at the third poll: two generations ran.
  const std::string stopped = play(dir, "stopped", std::string(load_city) + search_with("GA") +
                                                       "stop after 3\nmenu Run/Simple search algorithm\nyes\nok\n"
                                                       "menu File/Store assignment\nfile stopped.dat\nmenu Exit\n");
  EXPECT_NE(stopped.find("confirm: Do you want to stop the search? -> yes\nmessage: Best solution found so far: "),
            std::string::npos)
      << stopped;
  EXPECT_EQ(stopped.find("(3 generations)."), std::string::npos) << stopped;
  checked_report(dir / "stopped.dat", dir / "data");
  fs::remove_all(dir);
}
