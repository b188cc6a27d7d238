// The wide uplink loops (four and eight lanes) against the plain ones on random plans (fixed
// seeds): the same return, the same powers to the bit, the same rows and sweeps, the same
// report. Plans hold stations on the same spot (equal rows: ties), subsets of odd size, user
// counts that are no multiple of four, and settings that run into the iteration limit and the
// power limit. Then the loops alone on made-up rows with needs one ulp apart, where the
// estimates of the eight-lane loops cannot tell the rows apart.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"
#include "support/RandomPlan.h"

namespace {

struct Outcome {
  bool ok;
  double sweeps;
  std::string report;  // the assignment report, powers in full precision below
  std::string bits;    // every uplink and downlink power as raw bytes
};

// Stations and users with the planner's figures on 2 km square; every third station shares
// the spot of the one before, so that equal gain rows tie.
struct TwinPlan {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  TwinPlan(unsigned seed, int stations, int users, double rate) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> where(0, 2000);
    for (int t = 0; t < stations; ++t) {
      const bool twin = t % 3 == 2;
      const double x = twin ? tx.tail().position.xcoord() : where(random);
      const double y = twin ? tx.tail().position.ycoord() : where(random);
      tx.append(default_station(tk::d3_point(x, y, 30), t));
    }
    for (int r = 0; r < users; ++r) rx.append(default_user(tk::d3_point(where(random), where(random), 1.5), r, rate));
  }
};

// Switches the loops: lanes 0 the plain ones, 4 or 8 the wide ones; the eight-lane ones on
// one thread or, with any number of users, on two, estimating in single or double precision.
void use_loops(int lanes, int threads, bool float_keys = true) {
  Trl_UplinkKernels::enabled = lanes > 0;
  Trl_UplinkKernels::eight_lanes_enabled = lanes == 8;
  Trl_UplinkKernels::float_keys_enabled = float_keys;
  Trl_UplinkKernels::threads = threads;
  Trl_UplinkKernels::two_threads_from = 0;
  Trl_UplinkKernels::measure_threads = false;
}

void use_default_loops() {
  Trl_UplinkKernels::enabled = Trl_UplinkKernels::eight_lanes_enabled = true;
  Trl_UplinkKernels::float_keys_enabled = true;
  Trl_UplinkKernels::threads = 2;
  Trl_UplinkKernels::two_threads_from = 1 << 17;
  Trl_UplinkKernels::measure_threads = true;
}

const struct Loops {
  int lanes, threads;
  bool float_keys;
} wide_loops[] = {{4, 1, false}, {8, 1, true}, {8, 2, true}, {8, 1, false}, {8, 2, false}};

Outcome solve(TwinPlan& plan, int strategy, int max_iterations, unsigned subset_seed, Loops loops) {
  use_loops(loops.lanes, loops.threads, loops.float_keys);
  Trl_Assigner assigner;
  Trl_Assigner::parameters p;
  p.strategy = strategy;
  p.max_iterations = max_iterations;
  Trl_Motorola model(32.2, 35.1);
  assigner.prepare(plan.tx, plan.rx, p, model);
  Trl_Assignment a(assigner, Trl_Assignment::power_sum, plan.tx);
  std::mt19937 random(subset_seed);
  tk::list<int> positions;
  for (int k = 0; k < plan.tx.size(); ++k)
    if (subset_seed == 0 || random() % 4 != 0) positions.append(k);
  a.select(positions);
  a.initial_servers();
  Trl_RunningStats stats;
  Outcome o;
  o.ok = a.solve(true, &stats);
  o.sweeps = stats.sum;
  a.accumulate();
  std::ostringstream report;
  a.write(report);
  o.report = report.str();
  for (int r = 0; r < a.rx_count; ++r) {
    for (double v : {a.rx_uplink[r], a.rx_downlink[r], static_cast<double>(a.serving[r])})
      o.bits.append(reinterpret_cast<const char*>(&v), sizeof v);
  }
  use_default_loops();
  return o;
}

TEST(Trl_UplinkKernels, SameResultsAsThePlainLoops) {
  if (!Trl_UplinkKernels::available()) GTEST_SKIP() << "no AVX2 on this processor";
  struct Case {
    unsigned seed;
    int stations, users;
    double rate;
    int max_iterations;
    unsigned subset;
  };
  const Case cases[] = {
      {1, 9, 1003, 1.2, 100, 0},   // all on, users not a multiple of four
      {2, 13, 601, 1.2, 100, 7},   // a random subset
      {3, 7, 2, 1.2, 100, 0},      // fewer users than a vector
      {4, 11, 2000, 12.2, 100, 3}, // heavy load: over the power limit
      {5, 10, 999, 1.2, 2, 0},     // stops at the iteration limit
      {6, 1, 37, 1.2, 100, 0},     // one station
  };
  int solved = 0, failed = 0;
  for (const Case& c : cases) {
    TwinPlan plan(c.seed, c.stations, c.users, c.rate);
    for (int strategy = 0; strategy < 4; ++strategy) {
      const Outcome plain = solve(plan, strategy, c.max_iterations, c.subset, Loops{0, 1, false});
      for (Loops loops : wide_loops) {
        const Outcome wide = solve(plan, strategy, c.max_iterations, c.subset, loops);
        SCOPED_TRACE("seed " + std::to_string(c.seed) + " strategy " + std::to_string(strategy) + " lanes " +
                     std::to_string(loops.lanes) + " threads " + std::to_string(loops.threads) + " float " +
                     std::to_string(loops.float_keys));
        EXPECT_EQ(plain.ok, wide.ok);
        EXPECT_EQ(plain.sweeps, wide.sweeps);
        EXPECT_EQ(plain.report, wide.report);
        EXPECT_TRUE(plain.bits == wide.bits);
      }
      ++(plain.ok ? solved : failed);
    }
  }
  // Both outcomes must be among the cases, or the comparison proves little.
  EXPECT_GT(solved, 8);
  EXPECT_GT(failed, 2);
}

// Rows whose needs differ by an ulp or tie exactly, blocks of users with a short last vector,
// and the sums carried from one sweep to the next: every power, row and next sum as the plain
// loops give them.
struct MadeUpRows {
  int used, n;
  std::vector<std::vector<double>> gain;
  std::vector<const double*> pointers;
  std::vector<double> noise, target, activity, old;
  // quiet: the users' powers are so low that noise, the same on every row, sets the needs,
  // and rows whose gains are 2^-16 apart need within 2^-16 of each other. odd: inputs outside
  // the ranges where estimates order the rows: 1, users with targets of 0 and 1e-30 and
  // activities of 1e30; 2, a negative power; 3, a row with subnormal noise; 4, gains,
  // noise and activities spread far beyond the single-precision range, the sums within it;
  // 5, the same with sums beyond it.
  MadeUpRows(unsigned seed, int used, int n, double low_gain, bool quiet, int odd = 0) : used(used), n(n) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    gain.assign(used, std::vector<double>(n));
    for (int k = 0; k < used; ++k)
      for (int r = 0; r < n; ++r) {
        const int kind = random() % 8;
        if (k > 0 && kind == 0) gain[k][r] = gain[k - 1][r];  // a tie
        else if (k > 0 && kind == 1) gain[k][r] = std::nextafter(gain[k - 1][r], 1.0);  // an ulp apart
        else if (k > 0 && kind == 2) gain[k][r] = gain[k - 1][r] * (1 + 0x1p-16 * unit(random));
        else gain[k][r] = low_gain * std::pow(1e6, unit(random));
      }
    for (int k = 0; k < used; ++k) {
      pointers.push_back(gain[k].data());
      noise.push_back(quiet || k % 3 == 0 ? 1e-13 : 1e-13 * (1 + unit(random)));
    }
    for (int r = 0; r < n; ++r) {
      target.push_back(0.01 + unit(random));
      activity.push_back(0.5 + unit(random));
      old.push_back((quiet ? 1e-15 : 1e-3) * unit(random));
    }
    if (odd == 1) {
      for (int r = 0; r < n; r += 5) target[r] = r % 2 ? 0 : 1e-30;
      for (int r = 1; r < n; r += 7) activity[r] = 1e30;
    }
    if (odd == 2) old[n / 2] = -1e-3;
    if (odd == 3) noise[used / 2] = 1e-310;
    if (odd >= 4) {
      // Powers of two drawn evenly from these exponents; each old power keeps the user's
      // terms of every sum at or below 1.
      auto power_of_two = [&](double low, double high) { return std::exp2(low + (high - low) * unit(random)); };
      for (int k = 0; k < used; ++k) noise[k] = k % 2 ? power_of_two(-10, 15) : power_of_two(-55, -50);
      for (int r = 0; r < n; ++r) {
        double largest_gain = 0;
        for (int k = 0; k < used; ++k) {
          // Groups of eight users (a vector) with half their gains anywhere; all gains tiny,
          // below the float range on the quiet rows, the noise over the gain about 2^79 on all;
          // all gains huge.
          const int kind = r / 8 % 3;
          if (kind == 1) gain[k][r] = noise[k] * power_of_two(-83, -75);
          else if (kind == 2) gain[k][r] = power_of_two(90, 129);
          else if (random() % 2) gain[k][r] = power_of_two(-140, 140);
          largest_gain = std::max(largest_gain, gain[k][r]);
        }
        activity[r] = r / 8 % 3 == 2 ? power_of_two(50, 63) : power_of_two(-30, 25);
        old[r] = power_of_two(-40, 0) / largest_gain * (odd == 5 ? 0x1p60 : 1);
      }
    }
  }
  Trl_UplinkKernels::rows rows(bool normal) const {
    return Trl_UplinkKernels::rows{pointers.data(), noise.data(), used, n, normal};
  }
};

double plain_sum(const double* p, const double* g, int n) {
  double s[4] = {0, 0, 0, 0};
  int j = 0;
  for (; j + 4 <= n; j += 4)
    for (int l = 0; l < 4; ++l) s[l] += p[j + l] * g[j + l];
  for (; j < n; ++j) s[0] += p[j] * g[j];
  return (s[0] + s[1]) + (s[2] + s[3]);
}

void plain_sweep(const MadeUpRows& m, const std::vector<double>& old, std::vector<double>& p,
                 std::vector<double>& server) {
  p.assign(m.n, std::numeric_limits<double>::max());
  for (int c = m.used - 1; c >= 0; --c) {
    const double total = plain_sum(old.data(), m.gain[c].data(), m.n);
    for (int r = 0; r < m.n; ++r) {
      const double g = m.gain[c][r];
      const double q = ((total - old[r] * g) * m.activity[r] + m.noise[c]) * m.target[r] / g;
      if (q < p[r]) {
        p[r] = q;
        server[r] = c;
      }
    }
  }
}

TEST(Trl_UplinkKernels, LoopsAloneOnRowsAnUlpApart) {
  if (!Trl_UplinkKernels::available()) GTEST_SKIP() << "no AVX2 on this processor";
  const struct {
    unsigned seed;
    int used, n;
    double low_gain;
    bool quiet;
    int odd;
  } cases[] = {{1, 13, 203, 1e-14, false, 0}, {2, 1, 9, 1e-14, false, 0},  {3, 40, 1000, 1e-14, true, 0},
               {4, 9, 130, 1e-318, false, 0}, {5, 13, 203, 1e-14, false, 1}, {6, 13, 203, 1e-14, false, 2},
               {7, 13, 203, 1e-14, false, 3}, {8, 13, 2003, 1e-14, false, 4},
               {9, 13, 2003, 1e-14, false, 5}};
  int checked = 0, overs = 0;
  for (const auto& c : cases) {
    const MadeUpRows m(c.seed, c.used, c.n, c.low_gain, c.quiet, c.odd);
    const bool normal = c.low_gain > 1e-300;
    std::vector<double> plain_start(c.n);
    for (int r = 0; r < c.n; ++r) {
      double least = std::numeric_limits<double>::max();
      for (int k = 0; k < c.used; ++k) least = std::min(least, m.target[r] / m.gain[k][r] * m.noise[k]);
      plain_start[r] = least;
    }
    for (Loops loops : wide_loops) {
      SCOPED_TRACE("seed " + std::to_string(c.seed) + " lanes " + std::to_string(loops.lanes) + " threads " +
                   std::to_string(loops.threads) + " float " + std::to_string(loops.float_keys));
      use_loops(loops.lanes, loops.threads, loops.float_keys);
      Trl_UplinkKernels wide;
      std::vector<double> start(c.n);
      wide.least_alone(m.rows(normal), m.target.data(), start.data());
      EXPECT_TRUE(std::memcmp(start.data(), plain_start.data(), c.n * sizeof(double)) == 0);
      // Three sweeps from the made-up powers; the later ones take the sums carried over.
      std::vector<double> old = m.old, plain_old = m.old, p(c.n), plain_p(c.n);
      std::vector<double> server(c.n, -1), plain_server(c.n, -1);
      for (int sweep = 0; sweep < 3; ++sweep) {
        // Limits that some users exceed after the first sweep and none after the third.
        const std::vector<double> limit(c.n, sweep == 2 ? std::numeric_limits<double>::max() : 1e-4);
        std::fill(p.begin(), p.end(), -1.0);  // whatever the powers held before
        wide.simultaneous(m.rows(normal),
                          Trl_UplinkKernels::users{m.target.data(), m.activity.data(), server.data(), limit.data()},
                          old.data(), sweep > 0, p.data());
        plain_sweep(m, plain_old, plain_p, plain_server);
        EXPECT_TRUE(std::memcmp(p.data(), plain_p.data(), c.n * sizeof(double)) == 0) << "sweep " << sweep;
        EXPECT_EQ(server, plain_server) << "sweep " << sweep;
        // The checks made on the way, where the eight-lane loops made them.
        const Trl_UplinkKernels::checks& found = wide.last_checks();
        if (found.ready) {
          bool over = false;
          for (int r = 0; r < c.n; ++r) over |= plain_p[r] > limit[r];
          EXPECT_EQ(found.over_limit, over) << "sweep " << sweep;
          const double change = Trl_UplinkKernels::largest_change(plain_p.data(), plain_old.data(), c.n);
          EXPECT_TRUE(std::memcmp(&found.largest_change, &change, sizeof change) == 0) << "sweep " << sweep;
          ++checked;
          overs += over;
        }
        old = p;
        plain_old = plain_p;
      }
    }
    use_default_loops();
  }
  // Sweeps with and without a user over the limit were checked.
  EXPECT_GT(checked, 20);
  EXPECT_GT(overs, 5);
  EXPECT_LT(overs, checked);
}

TEST(Trl_UplinkKernels, LargestChangeAsThePlainLoop) {
  const double nan = std::nan(""), inf = std::numeric_limits<double>::infinity();
  const std::vector<double> now = {1, 2, 0.5, 0, nan, 3, inf, 1e-300, 4, 1};
  const std::vector<double> before = {1, 1, 1, 0, 1, nan, 1, 1e300, 2, 0.25};
  for (int n = 0; n <= static_cast<int>(now.size()); ++n) {
    double worst = 0;
    for (int r = 0; r < n; ++r) {
      const double up = now[r] / before[r], down = before[r] / now[r];
      const double change = up > down ? up : down;
      if (change > worst) worst = change;
    }
    EXPECT_EQ(Trl_UplinkKernels::largest_change(now.data(), before.data(), n), worst) << n;
  }
}

}  // namespace
