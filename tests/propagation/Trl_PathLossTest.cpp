#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>
#include <string>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "propagation/Trl_Wang.h"

TEST(Trl_Motorola, LogarithmicLawWithBothAntennaGains) {
  Trl_Motorola simple(32.2, 35.1);
  Trl_Tx tx;
  Trl_Rx rx;
  tx.gain = 1;
  rx.gain = 1;
  tx.position = tk::d3_point(0, 0, 10);
  rx.position = tk::d3_point(600, 800, 10);  // 1000 m
  // 32.2 + 3 * 35.1 = 137.5 dB
  EXPECT_NEAR(simple.gain(tx, rx), std::pow(10.0, -13.75), 1e-25);
  // Antenna gains of 9 dB and -3 dB add 6 dB.
  tx.gain = std::pow(10.0, 0.9);
  rx.gain = std::pow(10.0, -0.3);
  EXPECT_NEAR(10 * std::log10(simple.gain(tx, rx)), -137.5 + 6, 1e-9);
  // The height difference counts: straight above, 30 and 1.5 m give d = 28.5 m.
  tx.gain = rx.gain = 1;
  tx.position = tk::d3_point(5, 5, 30);
  rx.position = tk::d3_point(5, 5, 1.5);
  EXPECT_NEAR(10 * std::log10(simple.gain(tx, rx)), -(32.2 + 35.1 * std::log10(28.5)), 1e-9);
  // No cut-off: at distance 0 the gain is infinite.
  rx.position = tx.position;
  EXPECT_TRUE(std::isinf(simple.gain(tx, rx)));
  EXPECT_EQ(std::string(simple.description().cstring()), "");
}

TEST(Trl_Wang, LosslessEverywhere) {
  Trl_Wang wang(4, 1, std::pow(10.0, 0.8));
  Trl_Tx tx;
  Trl_Rx rx;
  rx.position = tk::d3_point(1e6, 0, 0);
  EXPECT_EQ(wang.gain(tx, rx), 1.0);
  EXPECT_EQ(wang.a, 4);
  EXPECT_EQ(std::string(wang.description().cstring()), "");
}

TEST(Trl_Motorola, RowOfGainsAgreesWithThePairwiseLaw) {
  Trl_Motorola simple(32.2, 35.1);
  Trl_Tx tx;
  tx.position = tk::d3_point(100, -50, 35);
  tx.gain = std::pow(10.0, 0.9);
  const int n = 7;  // odd: the last user takes the single-lane path
  double x[n], y[n], z[n], log_gain[n], out[n];
  for (int r = 0; r < n; ++r) {
    Trl_Rx rx;
    rx.position = tk::d3_point(13.0 * r * r - 40, 900.0 - 111 * r, 1.5 + r % 2);
    rx.gain = std::pow(10.0, -0.1 * r);
    x[r] = rx.position.xcoord();
    y[r] = rx.position.ycoord();
    z[r] = rx.position.zcoord();
    log_gain[r] = std::log(rx.gain);
  }
  simple.gain_row(tx, x, y, z, log_gain, n, out);
  for (int r = 0; r < n; ++r) {
    Trl_Rx rx;
    rx.position = tk::d3_point(x[r], y[r], z[r]);
    rx.gain = std::exp(log_gain[r]);
    const double expected = simple.gain(tx, rx);
    EXPECT_NEAR(out[r], expected, 1e-13 * expected) << "user " << r;
  }
  // Straight above the station: d = 0 is infinite gain here too.
  x[0] = 100;
  y[0] = -50;
  z[0] = 35;
  simple.gain_row(tx, x, y, z, log_gain, 1, out);
  EXPECT_TRUE(std::isinf(out[0]));
}

// Every user's gain has the same bits whichever width and place computed it: here by
// shifting the same users by one place, by switching the eight-lane loop off, and user by
// user alone. Distances from 1 m to 30 km, as in a city and its surroundings.
TEST(Trl_Motorola, RowIsTheSameBitsAtEveryWidth) {
  Trl_Motorola simple(32.2, 35.1);
  Trl_Tx tx;
  tx.position = tk::d3_point(0, 0, 30);
  tx.gain = std::pow(10.0, 0.9);
  const int n = 20011;
  std::mt19937 random(5);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> x(n + 1), y(n + 1), z(n + 1), log_gain(n + 1);
  for (int r = 0; r < n; ++r) {
    const double d = std::pow(10.0, 4.5 * unit(random)), angle = 6.283 * unit(random);
    x[r + 1] = d * std::cos(angle);
    y[r + 1] = d * std::sin(angle);
    z[r + 1] = 1.5 + 30 * unit(random);
    log_gain[r + 1] = -2.3 * unit(random);
  }
  std::vector<double> eight(n), four(n), shifted(n + 1);
  simple.gain_row(tx, x.data() + 1, y.data() + 1, z.data() + 1, log_gain.data() + 1, n, eight.data());
  simple.gain_row(tx, x.data(), y.data(), z.data(), log_gain.data(), n + 1, shifted.data());
  Trl_Motorola::eight_lanes = false;
  simple.gain_row(tx, x.data() + 1, y.data() + 1, z.data() + 1, log_gain.data() + 1, n, four.data());
  Trl_Motorola::eight_lanes = true;
  EXPECT_EQ(std::memcmp(eight.data(), four.data(), n * sizeof(double)), 0);
  for (int r = 0; r < n; ++r) EXPECT_EQ(eight[r], shifted[r + 1]) << r;
  // A user alone takes the padded path of a row's last users.
  for (int r = 0; r < n; r += 101) {
    double alone = 0;
    simple.gain_row(tx, &x[r + 1], &y[r + 1], &z[r + 1], &log_gain[r + 1], 1, &alone);
    EXPECT_EQ(alone, eight[r]) << r;
  }
}
