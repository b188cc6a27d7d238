// The whole way from plan files to the stored report, played through the program's menus
// by the scripted window backend, and the report re-checked from its own numbers: every
// user's uplink and downlink SIR is worked out from the positions in the files, with the
// simple propagation law written out here with the constants the script sets in the
// "Set model" and "Simple parameters" dialogs.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/Trl_Main.h"
#include "app/Trl_Planner.h"
#include "support/LinkEquations.h"
#include "toolkit/backend.h"
#include "toolkit/script/script_backend.h"

namespace {

struct Point {
  double x, y;
};

const std::vector<Point> stations = {{200, 200}, {800, 250}, {500, 700}};
const int station_numbers[] = {5, 7, 9};

std::vector<Point> users() {
  std::vector<Point> u;
  for (int k = 0; k < 12; ++k) u.push_back({80.0 + 73.0 * k, 120.0 + std::fmod(263.0 * k, 700.0)});
  return u;
}

// The simple law with both antenna gains (9 dBi and -3 dBi); base stations read from a file
// stand at height 0, users at 1.5 m.
double gain(const Point& s, const Point& u) {
  const double d = std::sqrt((s.x - u.x) * (s.x - u.x) + (s.y - u.y) * (s.y - u.y) + 1.5 * 1.5);
  const double loss_db = 30.5 + 37 * std::log10(d);
  return std::pow(10.0, (9 - 3 - loss_db) / 10);
}

}  // namespace

TEST(Trl_AssignmentReport, StoredReportMeetsTheLinkEquations) {
  const std::string dir = ::testing::TempDir() + "radio_report_" + std::to_string(getpid());
  ASSERT_EQ(std::system(("mkdir -p " + dir).c_str()), 0);
  {
    std::ofstream bs(dir + "/plan.dtx");
    for (size_t t = 0; t < stations.size(); ++t)
      bs << station_numbers[t] << " " << stations[t].x << " " << stations[t].y << "\n";
    std::ofstream mu(dir + "/plan.drx");
    const std::vector<Point> u = users();
    for (size_t r = 0; r < u.size(); ++r) mu << 100 + r << " " << u[r].x << " " << u[r].y << "\n";
  }
  std::string drive_dir = "C:" + dir;
  for (char& c : drive_dir)
    if (c == '/') c = '\\';
  const std::string script = "menu Set/Propagation parameters/Set model\n  set Propagation model = Simple\n  press Ok\n"
                             "menu Set/Propagation parameters/Simple parameters\n"
                             "  set Pathloss constant [dB] = 30.5\n  set Pathloss factor [dB/lg(m)] = 37\n  press Ok\n"
                             "menu File/Load base stations\n  file " + drive_dir + "\\plan.dtx\n"
                             "menu File/Load mobile users\n  file " + drive_dir + "\\plan.drx\n"
                             "menu Run/Compute Assignment\n"
                             "menu File/Store assignment\n  file " + drive_dir + "\\plan.dat\n"
                             "menu Exit\n";
  EXPECT_EXIT(
      {
        std::ofstream transcript(dir + "/transcript.txt");
        tk::script_backend backend(script, transcript);
        tk::set_backend(&backend);
        std::exit(run_planner_main());
      },
      ::testing::ExitedWithCode(0), "");

  std::ifstream in(dir + "/plan.dat");
  ASSERT_TRUE(in.good()) << "no report in " << dir;
  const StoredReport report = parse_report(in);
  const std::vector<Point> u = users();
  const int n = static_cast<int>(u.size()), m = static_cast<int>(stations.size());
  ASSERT_EQ(static_cast<int>(report.server.size()), n);
  ASSERT_EQ(static_cast<int>(report.tx_up.size()), m);
  ASSERT_GE(report.header.size(), 11u);
  EXPECT_EQ(report.header[2], "# number of rx in input               : 12");
  EXPECT_EQ(report.header[3], "# number of tx in input               : 3");
  EXPECT_EQ(report.header[4], "# number of tx used in assignation    : 3");
  ASSERT_EQ(report.labels.size(), 3u);
  EXPECT_EQ(report.labels[0], "0 : BS0005");
  EXPECT_EQ(report.labels[2], "2 : BS0009");

  // All stations are on and in list order, so a row is a station's position.
  std::vector<std::vector<double>> G(m, std::vector<double>(n));
  for (int t = 0; t < m; ++t)
    for (int r = 0; r < n; ++r) G[t][r] = gain(stations[t], u[r]);
  expect_link_equations(report, G, std::pow(10.0, -0.9), 20, 1);
  for (int t = 0; t < m; ++t) EXPECT_GT(report.tx_up[t], 0) << "station " << t << " serves nobody: the plan tests less";
  std::system(("rm -rf " + dir).c_str());
}
