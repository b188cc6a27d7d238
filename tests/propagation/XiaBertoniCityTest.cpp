// The sample city made by celvane-citygen, its base stations and mobile users read by the
// planner's own readers, and "Compute Assignment" with the default propagation model (the
// Xia-Bertoni model over the terrain). The report is checked against the link equations
// worked out here from a table of gains that a second model fills in a plain double loop.
#include <gtest/gtest.h>
#include "support/TestFolder.h"

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
#include "toolkit/directory.h"

namespace {

double watt(double dbm) { return std::pow(10.0, (dbm - 30) / 10); }

struct Report {
  std::vector<int> server;
  std::vector<double> up, down;        // W
  std::vector<double> tx_up, tx_down;  // W
};

Report parse(std::istream& in) {
  Report r;
  std::string line;
  int part = 0;
  while (std::getline(in, line)) {
    if (line.rfind("# rx number", 0) == 0) part = 1;
    else if (line.rfind("# tx number", 0) == 0) part = 2;
    else if (line.rfind("#", 0) == 0) continue;
    else if (part == 1) {
      int n, s;
      char up[64], down[64];
      EXPECT_EQ(std::sscanf(line.c_str(), "%d, %d, %63[^,], %63s", &n, &s, up, down), 4) << line;
      r.server.push_back(s);
      r.up.push_back(watt(std::strtod(up, nullptr)));
      r.down.push_back(watt(std::strtod(down, nullptr)));
    } else if (part == 2) {
      int k;
      double a, b;
      EXPECT_EQ(std::sscanf(line.c_str(), "%d, %lf, %lf", &k, &a, &b), 3) << line;
      r.tx_up.push_back(a);
      r.tx_down.push_back(b);
    }
  }
  return r;
}

// The planner's defaults worked out by hand: 5 MHz, 17 degrees, 5.5 dB up and 10 dB down at
// 12.2 kbit/s, noise figures 5 dB and 9 dB, activity 0.66, orthogonality 0.4, pilot 2 W.
const double W = 5e6;
const double kT = (273.18 + 17) * 1.380658e-23;
const double tx_noise = kT * W * std::pow(10.0, 0.5);
const double rx_noise = kT * W * std::pow(10.0, 0.9);
const double gamma_up = std::pow(10.0, 0.55) * 12.2e3 / W;
const double gamma_down = std::pow(10.0, 1.0) * 12.2e3 / W;
const double activity = 0.66, orthogonality = 0.4, pilot = 2;
const double printed = 2e-5;  // six printed digits

}  // namespace

TEST(XiaBertoniCity, ComputeAssignmentOnTheSampleCityMeetsTheLinkEquations) {
  const std::string dir = test_folder("celvane_xb_city").string();
  std::filesystem::remove_all(dir);
  std::filesystem::create_directories(dir);
  const std::string generator = std::string(CELVANE_BINARY_DIR) + "/apps/celvane-citygen";
  ASSERT_EQ(std::system((generator + " --out " + dir).c_str()), 0);

  Trl_Planner p;
  ASSERT_EQ(p.propagation_model, 1);
  p.terrain = new Trl_Terrain;
  testing::internal::CaptureStdout();
  p.terrain->load(tk::to_drive_path(dir + "/terrain.map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
  testing::internal::GetCapturedStdout();
  ASSERT_TRUE(p.terrain->loaded());
  // The readers as the load commands use them: base stations at the height over ground,
  // users at the user height, each user with its cell on the terrain.
  {
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
  }
  ASSERT_EQ(p.tx_list.size(), 40);
  ASSERT_EQ(p.rx_list.size(), 400);

  tk::list<Trl_Tx> working;
  int fixed = 0;
  ASSERT_TRUE(p.compute_all(working, fixed, nullptr)) << "no assignment with all base stations";
  ASSERT_NE(p.assignment, nullptr);
  std::stringstream report_text;
  report_text << *p.assignment;
  const Report report = parse(report_text);

  // The gains by a second model in a plain double loop, each base station on its cell.
  const int m = working.size(), n = p.rx_list.size();
  Trl_XiaBertoni model(p.terrain, p.frequency, p.max_cell_radius, p.height_tolerance, p.geometric_average,
                       p.lmsd_linear, p.lmsd_exponent, p.far_pathloss_constant, p.far_pathloss_factor,
                       p.indoor_attenuation);
  std::vector<std::vector<double>> G(m, std::vector<double>(n));
  int t = 0, differ = 0;
  for (Trl_Tx tx : working) {
    tx.set_cell(p.terrain->height_grid());
    for (const Trl_Rx& rx : p.rx_list) {
      G[t][rx.number] = model.gain(tx, rx);
      const double table = p.assigner.path_gain(t, rx.number);
      differ += std::memcmp(&table, &G[t][rx.number], sizeof table) != 0;
    }
    ++t;
  }
  EXPECT_EQ(differ, 0);

  ASSERT_EQ(static_cast<int>(report.server.size()), n);
  ASSERT_EQ(static_cast<int>(report.tx_up.size()), m);
  const double tolerance = std::pow(10.0, 0.003) * (1 + printed);
  std::vector<double> served_up(m, 0), served_down(m, 0);
  int serving_stations = 0;
  for (int r = 0; r < n; ++r) {
    const int s = report.server[r];
    ASSERT_GE(s, 0);
    ASSERT_LT(s, m);
    served_up[s] += report.up[r];
    served_down[s] += report.down[r];
    // Uplink: the need at the serving station is met within the tolerance, and no other
    // station would need clearly less.
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
    EXPECT_LE(report.up[r], p.rx_max_power * (1 + printed));
  }
  for (int k = 0; k < m; ++k) {
    serving_stations += served_up[k] > 0;
    EXPECT_NEAR(report.tx_up[k], served_up[k], printed * served_up[k] + 1e-300);
    if (served_down[k] > 0) {
      EXPECT_NEAR(report.tx_down[k], pilot + served_down[k], printed * report.tx_down[k]);
    }
    EXPECT_LE(report.tx_down[k], p.tx_max_power);
  }
  EXPECT_GE(serving_stations, 2) << "the plan tests little when one station serves all";
  // Downlink: each channel meets gamma_down against the noise, the other stations' full
  // power and the own station's power less the own channel, scaled by the orthogonality.
  for (int r = 0; r < n; ++r) {
    const int s = report.server[r];
    double interference = rx_noise;
    for (int k = 0; k < m; ++k) {
      const double received = k == s ? report.tx_down[k] - report.down[r] : report.tx_down[k];
      interference += (k == s ? orthogonality : 1) * G[k][r] * received;
    }
    EXPECT_NEAR(report.down[r] * G[s][r] / interference, gamma_down, 1e-4 * gamma_down) << "user " << r;
    EXPECT_LE(report.down[r], p.tx_max_channel_power * (1 + printed));
  }
  std::filesystem::remove_all(dir);
}
