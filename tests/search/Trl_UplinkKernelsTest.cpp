// The wide uplink loops against the plain ones on random plans (fixed seeds): the same
// return, the same powers to the bit, the same rows and sweeps, the same report. Plans hold
// stations on the same spot (equal rows: ties), subsets of odd size, user counts that are no
// multiple of four, and settings that run into the iteration limit and the power limit.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <sstream>
#include <string>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "search/Trl_UplinkKernels.h"

namespace {

struct Outcome {
  bool ok;
  double sweeps;
  std::string report;  // the assignment report, powers in full precision below
  std::string bits;    // every uplink and downlink power as raw bytes
};

struct RandomPlan {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  RandomPlan(unsigned seed, int stations, int users, double rate) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> where(0, 2000);
    for (int t = 0; t < stations; ++t) {
      // Every third station shares the spot of the one before: equal gain rows.
      const bool twin = t % 3 == 2;
      const double x = twin ? tx.tail().position.xcoord() : where(random);
      const double y = twin ? tx.tail().position.ycoord() : where(random);
      tx.append(Trl_Tx(tk::d3_point(x, y, 30), tk::string("BS"), t, 20, 2, 1, std::pow(10.0, 0.9),
                       std::pow(10.0, 0.5), 0.4, 0));
    }
    for (int r = 0; r < users; ++r)
      rx.append(Trl_Rx(tk::d3_point(where(random), where(random), 1.5), r, 10, std::pow(10.0, 0.55),
                       std::pow(10.0, 0.9), std::pow(10.0, -0.9), 1e-8, std::pow(10.0, -0.3), 0.66, rate,
                       rate, 0));
  }
};

Outcome solve(RandomPlan& plan, int strategy, int max_iterations, unsigned subset_seed, bool wide) {
  Trl_UplinkKernels::enabled = wide;
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
  Trl_UplinkKernels::enabled = true;
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
    RandomPlan plan(c.seed, c.stations, c.users, c.rate);
    for (int strategy = 0; strategy < 4; ++strategy) {
      const Outcome plain = solve(plan, strategy, c.max_iterations, c.subset, false);
      const Outcome wide = solve(plan, strategy, c.max_iterations, c.subset, true);
      SCOPED_TRACE("seed " + std::to_string(c.seed) + " strategy " + std::to_string(strategy));
      EXPECT_EQ(plain.ok, wide.ok);
      EXPECT_EQ(plain.sweeps, wide.sweeps);
      EXPECT_EQ(plain.report, wide.report);
      EXPECT_TRUE(plain.bits == wide.bits);
      ++(plain.ok ? solved : failed);
    }
  }
  // Both outcomes must be among the cases, or the comparison proves little.
  EXPECT_GT(solved, 8);
  EXPECT_GT(failed, 2);
}

}  // namespace
