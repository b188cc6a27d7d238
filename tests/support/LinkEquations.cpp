#include "support/LinkEquations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace {

double watt(double dbm) { return std::pow(10.0, (dbm - 30) / 10); }

// 5 MHz, 17 degrees, 5.5 dB up and 10 dB down at 12.2 kbit/s, noise figures 5 dB and 9 dB,
// activity 0.66, orthogonality 0.4, pilot 2 W.
const double W = 5e6;
const double kT = (273.18 + 17) * 1.380658e-23;
const double tx_noise = kT * W * std::pow(10.0, 0.5);
const double rx_noise = kT * W * std::pow(10.0, 0.9);
const double gamma_up = std::pow(10.0, 0.55) * 12.2e3 / W;
const double gamma_down = std::pow(10.0, 1.0) * 12.2e3 / W;
const double activity = 0.66, orthogonality = 0.4, pilot = 2;
const double printed = 2e-5;  // six printed digits

}  // namespace

StoredReport parse_report(std::istream& in) {
  StoredReport r;
  std::string line;
  int part = 0;  // 0 head, 1 users, 2 stations, 3 labels
  while (std::getline(in, line)) {
    if (line.rfind("# ---", 0) == 0) continue;
    if (line.rfind("# rx number", 0) == 0) part = 1;
    else if (line.rfind("# tx number", 0) == 0) part = 2;
    else if (line.rfind("# base station number/label table", 0) == 0) part = 3;
    else if (line.rfind("#", 0) == 0) {
      if (part != 0) continue;
      r.header.push_back(line);
      if (line.rfind("# number of tx used in assignation    : ", 0) == 0) r.tx_used = std::atoi(line.c_str() + 40);
      if (line.rfind("# total transmitted rx uplink power   : ", 0) == 0)
        r.uplink_sum = std::strtod(line.c_str() + 40, nullptr);
    } else if (part == 1) {
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
      EXPECT_EQ(k, static_cast<int>(r.tx_up.size()));
      r.tx_up.push_back(a);
      r.tx_down.push_back(b);
    } else if (part == 3) {
      r.labels.push_back(line);
    }
  }
  return r;
}

std::vector<int> stations_in_use(const StoredReport& report) {
  std::vector<int> numbers;
  for (size_t k = 0; k < report.tx_down.size(); ++k)
    if (report.tx_down[k] > 0) numbers.push_back(static_cast<int>(k));
  return numbers;
}

void expect_link_equations(const StoredReport& report, const std::vector<std::vector<double>>& G,
                           double rx_max_power, double tx_max_power, double tx_max_channel_power) {
  const std::vector<int> rows = stations_in_use(report);
  const int n = static_cast<int>(report.server.size()), m = static_cast<int>(report.tx_up.size());
  ASSERT_EQ(static_cast<int>(rows.size()), report.tx_used);
  ASSERT_EQ(static_cast<int>(G.size()), m);
  const double tolerance = std::pow(10.0, 0.003) * (1 + printed);
  std::vector<double> served_up(m, 0), served_down(m, 0);
  double sum = 0;
  for (int r = 0; r < n; ++r) {
    ASSERT_GE(report.server[r], 0);
    ASSERT_LT(report.server[r], static_cast<int>(rows.size()));
    const int s = rows[report.server[r]];
    served_up[s] += report.up[r];
    served_down[s] += report.down[r];
    sum += report.up[r];
    // Uplink: the need at the serving station is met within the tolerance, and no other
    // station in use would need clearly less.
    double least = 1e300, own_need = 0;
    for (int c : rows) {
      double total = 0;
      for (int j = 0; j < n; ++j) total += report.up[j] * G[c][j];
      const double need = ((total - report.up[r] * G[c][r]) * activity + tx_noise) * gamma_up / G[c][r];
      least = std::min(least, need);
      if (c == s) own_need = need;
    }
    EXPECT_LE(own_need, least * tolerance * tolerance) << "user " << r;
    EXPECT_GE(report.up[r] / own_need, 1 / tolerance) << "user " << r;
    EXPECT_LE(report.up[r] / own_need, tolerance) << "user " << r;
    EXPECT_LE(report.up[r], rx_max_power * (1 + printed));
  }
  EXPECT_NEAR(report.uplink_sum, sum, 1e-4 * sum);
  for (int k = 0; k < m; ++k) {
    EXPECT_NEAR(report.tx_up[k], served_up[k], printed * served_up[k] + 1e-300);
    if (served_down[k] > 0) {
      EXPECT_NEAR(report.tx_down[k], pilot + served_down[k], printed * report.tx_down[k]);
    }
    EXPECT_LE(report.tx_down[k], tx_max_power);
  }
  // Downlink: each channel meets its target against the noise, the other stations' full
  // power and the own station's power less the own channel, scaled by the orthogonality.
  for (int r = 0; r < n; ++r) {
    const int s = rows[report.server[r]];
    double interference = rx_noise;
    for (int k : rows) {
      const double received = k == s ? report.tx_down[k] - report.down[r] : report.tx_down[k];
      interference += (k == s ? orthogonality : 1) * G[k][r] * received;
    }
    EXPECT_NEAR(report.down[r] * G[s][r] / interference, gamma_down, 1e-4 * gamma_down) << "user " << r;
    EXPECT_LE(report.down[r], tx_max_channel_power * (1 + printed));
  }
}
