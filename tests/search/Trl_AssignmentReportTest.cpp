// The whole way from plan files to the stored report, played through the program's menus
// by the scripted window backend, and the report re-checked from its own numbers: every
// user's uplink and downlink SIR is worked out here from the positions in the files, with
// the simple propagation law, the noise and the targets written out by hand.
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

// The planner's defaults, worked out by hand.
const double W = 5e6;
const double kT = (273.18 + 17) * 1.380658e-23;
const double tx_noise = kT * W * std::pow(10.0, 0.5);
const double rx_noise = kT * W * std::pow(10.0, 0.9);
const double gamma_up = std::pow(10.0, 0.55) * 12.2e3 / W;
const double gamma_down = std::pow(10.0, 1.0) * 12.2e3 / W;
const double activity = 0.66, orthogonality = 0.4, pilot = 2;

// The simple law with both antenna gains (9 dBi and -3 dBi); base stations read from a file
// stand at height 0, users at 1.5 m.
double gain(const Point& s, const Point& u) {
  const double d = std::sqrt((s.x - u.x) * (s.x - u.x) + (s.y - u.y) * (s.y - u.y) + 1.5 * 1.5);
  const double loss_db = 32.2 + 35.1 * std::log10(d);
  return std::pow(10.0, (9 - 3 - loss_db) / 10);
}

double watt(double dbm) { return std::pow(10.0, (dbm - 30) / 10); }

struct Report {
  std::vector<std::string> header;
  std::vector<int> server;
  std::vector<double> up, down;          // W
  std::vector<double> tx_up, tx_down;    // W
  std::vector<std::string> labels;
};

Report parse(std::istream& in) {
  Report r;
  std::string line;
  int part = 0;  // 0 head, 1 users, 2 stations, 3 labels
  while (std::getline(in, line)) {
    if (line.rfind("# ---", 0) == 0) continue;
    if (line.rfind("# rx number", 0) == 0) part = 1;
    else if (line.rfind("# tx number", 0) == 0) part = 2;
    else if (line.rfind("# base station number/label table", 0) == 0) part = 3;
    else if (line.rfind("# ", 0) == 0) r.header.push_back(line);
    else if (part == 1) {
      int n, s;
      char up[64], down[64];
      EXPECT_EQ(std::sscanf(line.c_str(), "%d, %d, %63[^,], %63s", &n, &s, up, down), 4) << line;
      EXPECT_EQ(n, static_cast<int>(r.server.size()));
      r.server.push_back(s);
      r.up.push_back(watt(std::strtod(up, nullptr)));
      r.down.push_back(watt(std::strtod(down, nullptr)));
    } else if (part == 2) {
      int k;
      double a, b;
      EXPECT_EQ(std::sscanf(line.c_str(), "%d, %lf, %lf", &k, &a, &b), 3) << line;
      r.tx_up.push_back(a);
      r.tx_down.push_back(b);
    } else if (part == 3) {
      r.labels.push_back(line);
    }
  }
  return r;
}

// Six printed digits: relative errors up to about 1e-5 in W.
const double printed = 2e-5;

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
  const std::string script = "menu File/Load base stations\n  file " + drive_dir + "\\plan.dtx\n"
                             "menu File/Load mobile users\n  file " + drive_dir + "\\plan.drx\n"
                             "menu Run/Compute Assignment\n"
                             "menu File/Store assignment\n  file " + drive_dir + "\\plan.dat\n"
                             "menu Exit\n";
  EXPECT_EXIT(
      {
        std::ofstream transcript(dir + "/transcript.txt");
        tk::script_backend backend(script, transcript);
        tk::set_backend(&backend);
        planner.propagation_model = 0;  // "Simple", as the "Set model" dialog would store it
        std::exit(run_planner_main());
      },
      ::testing::ExitedWithCode(0), "");

  std::ifstream in(dir + "/plan.dat");
  ASSERT_TRUE(in.good()) << "no report in " << dir;
  const Report report = parse(in);
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
  const double tolerance = std::pow(10.0, 0.003) * (1 + printed);

  std::vector<double> served_up(m, 0), served_down(m, 0);
  for (int r = 0; r < n; ++r) {
    const int s = report.server[r];
    ASSERT_GE(s, 0);
    ASSERT_LT(s, m);
    served_up[s] += report.up[r];
    served_down[s] += report.down[r];
    // Uplink: the SIR at the serving station meets gamma_up within the tolerance, and no
    // other station would need clearly less power.
    double least = 1e300, own_need = 0;
    for (int c = 0; c < m; ++c) {
      double total = 0;
      for (int j = 0; j < n; ++j) total += report.up[j] * G[c][j];
      const double need = ((total - report.up[r] * G[c][r]) * activity + tx_noise) * gamma_up / G[c][r];
      least = std::min(least, need);
      if (c == s) own_need = need;
    }
    EXPECT_LE(own_need, least * tolerance * tolerance) << "user " << r;
    EXPECT_GE(report.up[r] / own_need, 1 / tolerance) << "user " << r;
    EXPECT_LE(report.up[r] / own_need, tolerance) << "user " << r;
    EXPECT_LE(report.up[r], std::pow(10.0, -0.9));
  }
  for (int t = 0; t < m; ++t) {
    EXPECT_GT(served_up[t], 0) << "station " << t << " serves nobody: the plan tests less";
    EXPECT_NEAR(report.tx_up[t], served_up[t], printed * served_up[t] + 1e-300);
    if (served_down[t] > 0) EXPECT_NEAR(report.tx_down[t], pilot + served_down[t], printed * report.tx_down[t]);
    else EXPECT_EQ(report.tx_down[t], 0);
    EXPECT_LE(report.tx_down[t], 20);
  }
  // Downlink: each channel power meets gamma_down against the noise, the full power of the
  // other stations and the own station's power less the own channel, scaled by 0.4.
  for (int r = 0; r < n; ++r) {
    const int s = report.server[r];
    double interference = rx_noise;
    for (int t = 0; t < m; ++t) {
      const double received = t == s ? report.tx_down[t] - report.down[r] : report.tx_down[t];
      interference += (t == s ? orthogonality : 1) * G[t][r] * received;
    }
    const double sir = report.down[r] * G[s][r] / interference;
    EXPECT_NEAR(sir, gamma_down, 1e-4 * gamma_down) << "user " << r;
    EXPECT_LE(report.down[r], 1);
  }
  std::system(("rm -rf " + dir).c_str());
}
