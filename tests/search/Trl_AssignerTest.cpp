// The power solver against computations written out here: the uplink SIR of every user and
// the downlink balance of every base station are re-derived from the solution's own powers,
// and small plans are worked from the formulas by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <map>
#include <sstream>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "propagation/Trl_PathLoss.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_RunningStats.h"
#include "support/ErrorGuard.h"

namespace {

const double W = 5e6;  // chip rate of 5 MHz
const double T = 17;   // degrees Celsius
const double kT = (273.18 + T) * 1.380658e-23;

// Gains given by hand: gain of (tx number, rx number).
class TableModel : public Trl_PathLoss {
 public:
  std::map<std::pair<int, int>, double> values;
  double gain(const Trl_Tx& tx, const Trl_Rx& rx) override {
    return values.at({tx.number, rx.number});
  }
  tk::string description() override { return tk::string(""); }
};

Trl_Tx station(int number, double x = 0, double y = 0) {
  return Trl_Tx(tk::d3_point(x, y, 30), tk::string("BS"), number, 20, 2, 1, 1, 1, 0.4, 0);
}

// A user with Eb/N0 chosen so that gamma = Eb/N0 * rate * 1000 / W comes out as given.
Trl_Rx user(int number, double gamma_up, double gamma_down, double x = 0, double y = 0) {
  const double rate = 12.2;
  return Trl_Rx(tk::d3_point(x, y, 1.5), number, gamma_down * W / (rate * 1000),
                gamma_up * W / (rate * 1000), 1, 0.125, 1e-11, 1, 0.5, rate, rate, 0);
}

Trl_Assigner::parameters settings(int strategy = 0) {
  Trl_Assigner::parameters p;
  p.strategy = strategy;
  p.bandwidth = 5;
  p.temperature = T;
  p.validate_downlink = true;
  p.max_iterations = 100;
  p.tolerance = std::pow(10.0, 0.003);
  return p;
}

struct Plan {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  TableModel model;
  Trl_Assigner assigner;
  std::vector<Trl_Tx> txv;
  std::vector<Trl_Rx> rxv;

  void add(const Trl_Tx& t) { tx.append(t); txv.push_back(t); }
  void add(const Trl_Rx& r) { rx.append(r); rxv.push_back(r); }
  void set_gain(int t, int r, double g) { model.values[{t, r}] = g; }
  void prepare(const Trl_Assigner::parameters& p) { assigner.prepare(tx, rx, p, model); }
  double G(int position, int r) const { return model.values.at({txv[position].number, r}); }
  // Prepared with p and solved with all base stations on, in a fresh assignment.
  bool solves(const Trl_Assigner::parameters& p, bool validate = false) {
    prepare(p);
    Trl_Assignment a(assigner, Trl_Assignment::power_sum, tx);
    a.select_all();
    return a.solve(validate);
  }
};

// Re-derives the uplink SIR of every user from the solution's powers: with s the serving
// position, SIR = p[r] G[s][r] / ((sum_j p[j] G[s][j] - p[r] G[s][r]) a[r] + N[s]).
// At convergence it meets gamma_up within the tolerance.
void expect_uplink_holds(const Plan& plan, const Trl_Assignment& a, double tolerance) {
  std::vector<int> position_of_row;
  for (int k = 0; k < a.tx_count; ++k)
    if (a.selected[k]) position_of_row.push_back(k);
  for (int r = 0; r < a.rx_count; ++r) {
    const int s = position_of_row.at(a.serving[r]);
    double total = 0;
    for (int j = 0; j < a.rx_count; ++j) total += a.rx_uplink[j] * plan.G(s, j);
    const Trl_Rx& u = plan.rxv[r];
    const double noise = kT * W * plan.txv[s].noise_factor;
    const double own = a.rx_uplink[r] * plan.G(s, r);
    const double sir = own / ((total - own) * u.activity + noise);
    const double target = u.ebno_up * u.rate_up * 1000 / W;
    EXPECT_GE(sir, target / tolerance) << "user " << r;
    EXPECT_LE(sir, target * tolerance) << "user " << r;
    EXPECT_LE(a.rx_uplink[r], u.max_power) << "user " << r;
  }
}

// Re-derives the downlink: every station's total is pilot plus its users' channel powers, and
// every user's channel power meets gamma_down against noise plus the other stations' full
// power and its own station's power less its own channel, scaled by the orthogonality.
// Valid when numbers equal positions.
void expect_downlink_holds(const Plan& plan, const Trl_Assignment& a) {
  std::vector<int> position_of_row;
  for (int k = 0; k < a.tx_count; ++k)
    if (a.selected[k]) position_of_row.push_back(k);
  std::vector<double> total(a.tx_count, 0.0);
  std::vector<bool> serves(a.tx_count, false);
  for (int r = 0; r < a.rx_count; ++r) {
    const int s = position_of_row.at(a.serving[r]);
    total[s] += a.rx_downlink[r];
    serves[s] = true;
  }
  for (int k = 0; k < a.tx_count; ++k) {
    if (!serves[k]) {
      EXPECT_EQ(a.tx_downlink[k], 0) << "idle station " << k;
      continue;
    }
    EXPECT_NEAR(a.tx_downlink[k], plan.txv[k].pilot_power + total[k], 1e-9 * a.tx_downlink[k]);
    EXPECT_LE(a.tx_downlink[k], plan.txv[k].max_power);
  }
  for (int r = 0; r < a.rx_count; ++r) {
    const int s = position_of_row.at(a.serving[r]);
    const Trl_Rx& u = plan.rxv[r];
    double interference = kT * W * u.noise_factor;
    for (int k = 0; k < a.tx_count; ++k) {
      if (!serves[k]) continue;
      const double w = k == s ? plan.txv[s].orthogonality : 1;
      const double received = k == s ? a.tx_downlink[k] - a.rx_downlink[r] : a.tx_downlink[k];
      interference += w * plan.G(k, r) * received;
    }
    const double sir = a.rx_downlink[r] * plan.G(s, r) / interference;
    const double target = u.ebno_down * u.rate_down * 1000 / W;
    EXPECT_NEAR(sir, target, 1e-9 * target) << "user " << r;
    EXPECT_LE(a.rx_downlink[r], plan.txv[s].max_channel_power);
  }
}

}  // namespace

TEST(Trl_Assigner, OneStationOneUserWorkedByHand) {
  Plan plan;
  plan.add(station(0));
  plan.add(user(0, 0.01, 0.02));
  const double G = 1e-10;
  plan.set_gain(0, 0, G);
  plan.prepare(settings(0));

  const Trl_Assigner& as = plan.assigner;
  EXPECT_EQ(as.tx_count, 1);
  EXPECT_EQ(as.rx_count, 1);
  EXPECT_NEAR(as.gamma_up[0], 0.01, 1e-15);
  EXPECT_NEAR(as.gamma_down[0], 0.02, 1e-15);
  const double N = kT * W;  // noise factor 1 on both sides
  EXPECT_NEAR(as.tx_noise[0], N, N * 1e-12);
  EXPECT_NEAR(as.rx_noise[0], N, N * 1e-12);
  EXPECT_NEAR(as.downlink_share(0, 0), 0.02 / (0.4 * 0.02 + 1), 1e-15);
  EXPECT_EQ(as.rx_max_power_sum, 0.125);

  Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  ASSERT_TRUE(a.solve(true, &stats));
  // Alone, the user needs gamma_up * N / G, and the start from below is already that value:
  // the worst change of the first sweep is 1, so one sweep suffices.
  const double p = 0.01 / G * N;
  EXPECT_NEAR(a.rx_uplink[0], p, p * 1e-12);
  EXPECT_EQ(stats.count, 1);
  EXPECT_EQ(stats.sum, 1);
  EXPECT_EQ(a.serving[0], 0);
  // Downlink by hand: x = pilot + share/G (N + w G x), so x = (pilot + share N / G) / (1 - w share).
  const double share = 0.02 / (0.4 * 0.02 + 1);
  const double x = (2 + share * N / G) / (1 - 0.4 * share);
  EXPECT_NEAR(a.tx_downlink[0], x, x * 1e-12);
  EXPECT_NEAR(a.rx_downlink[0], x - 2, (x - 2) * 1e-12);
  expect_uplink_holds(plan, a, plan.assigner.tolerance);
  expect_downlink_holds(plan, a);
}

TEST(Trl_Assigner, ColumnsComeFromTheUserNumber) {
  Plan plan;
  plan.add(station(0));
  plan.add(station(1));
  plan.add(user(1, 0.01, 0.01));  // position 0, number 1
  plan.add(user(0, 0.02, 0.01));  // position 1, number 0
  plan.set_gain(0, 0, 1);
  plan.set_gain(0, 1, 2);
  plan.set_gain(1, 0, 3);
  plan.set_gain(1, 1, 4);
  plan.prepare(settings());
  EXPECT_EQ(plan.assigner.path_gain(0, 0), 1);
  EXPECT_EQ(plan.assigner.path_gain(0, 1), 2);
  EXPECT_EQ(plan.assigner.path_gain(1, 0), 3);
  EXPECT_EQ(plan.assigner.path_gain(1, 1), 4);
  // The targets follow the list position.
  EXPECT_NEAR(plan.assigner.gamma_up[0], 0.01, 1e-15);
  EXPECT_NEAR(plan.assigner.gamma_up[1], 0.02, 1e-15);

  // A number past the list is an index error of the table.
  Plan gap;
  gap.add(station(0));
  gap.add(user(5, 0.01, 0.01));
  gap.set_gain(0, 5, 1);
  EXPECT_TK_ERROR(gap.prepare(settings()), 2, "array::entry index out of range");
}

TEST(Trl_Assigner, EqualGainsTieRules) {
  // One user hears two stations alike: strongest_server takes the lower position, the
  // iteration leaves the user with the higher row, in all four strategies.
  Plan plan;
  plan.add(station(0, 0, 0));
  plan.add(station(1, 1000, 0));
  plan.add(user(0, 0.01, 0.02));
  plan.set_gain(0, 0, 1e-11);
  plan.set_gain(1, 0, 1e-11);
  for (int strategy = 0; strategy < 4; ++strategy) {
    plan.prepare(settings(strategy));
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    a.initial_servers();
    EXPECT_EQ(a.serving[0], 0);
    ASSERT_TRUE(a.solve(true)) << "strategy " << strategy;
    EXPECT_EQ(a.serving[0], 1) << "strategy " << strategy;
    expect_uplink_holds(plan, a, plan.assigner.tolerance);
    expect_downlink_holds(plan, a);
  }
}

TEST(Trl_Assigner, TwoSymmetricStations) {
  // Each of two users is near its own station; the mirror image gives both the same power.
  Plan plan;
  plan.add(station(0, 0, 0));
  plan.add(station(1, 1000, 0));
  plan.add(user(0, 0.01, 0.02));
  plan.add(user(1, 0.01, 0.02));
  plan.set_gain(0, 0, 1e-9);
  plan.set_gain(1, 0, 1e-12);
  plan.set_gain(0, 1, 1e-12);
  plan.set_gain(1, 1, 1e-9);
  for (int strategy = 0; strategy < 4; ++strategy) {
    plan.prepare(settings(strategy));
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    a.initial_servers();
    EXPECT_EQ(a.serving[0], 0);
    EXPECT_EQ(a.serving[1], 1);
    ASSERT_TRUE(a.solve(true)) << "strategy " << strategy;
    EXPECT_EQ(a.serving[0], 0);
    EXPECT_EQ(a.serving[1], 1);
    // By hand: S = p G of each user solves S = gamma (a S g/G + N) with g/G = 1e-3.
    const double N = kT * W, gamma = 0.01, ratio = 1e-3;
    const double S = gamma * N / (1 - gamma * 0.5 * ratio);
    EXPECT_NEAR(a.rx_uplink[0] * 1e-9, S, S * 0.01) << "strategy " << strategy;
    EXPECT_NEAR(a.rx_uplink[1] * 1e-9, S, S * 0.01);
    EXPECT_NEAR(a.tx_downlink[0], a.tx_downlink[1], 1e-9);
    expect_uplink_holds(plan, a, plan.assigner.tolerance);
    expect_downlink_holds(plan, a);
  }
}

TEST(Trl_Assigner, ToleranceOfOneIsNeverMet) {
  Plan plan;
  plan.add(station(0));
  plan.add(user(0, 0.01, 0.02));
  plan.set_gain(0, 0, 1e-10);
  Trl_Assigner::parameters p = settings(0);
  p.tolerance = 1;
  plan.prepare(p);
  Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  a.select_all();
  a.initial_servers();
  Trl_RunningStats stats;
  EXPECT_FALSE(a.solve(true, &stats));
  EXPECT_EQ(stats.count, 0);
}

TEST(Trl_Assigner, SweepCounterIsTestedBeforeEachSweep) {
  // Two users of one station converge from below in several sweeps; find how many, then
  // allow exactly that many, and one less.
  Plan plan;
  plan.add(station(0));
  plan.add(user(0, 0.2, 0.01));
  plan.add(user(1, 0.2, 0.01));
  plan.set_gain(0, 0, 1e-10);
  plan.set_gain(0, 1, 2e-10);
  for (int strategy : {0, 2}) {
    plan.prepare(settings(strategy));
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    Trl_RunningStats stats;
    ASSERT_TRUE(a.solve(false, &stats));
    const int sweeps = static_cast<int>(stats.sum);
    ASSERT_GT(sweeps, 2);
    expect_uplink_holds(plan, a, plan.assigner.tolerance);

    Trl_Assigner::parameters p = settings(strategy);
    p.max_iterations = sweeps;
    EXPECT_TRUE(plan.solves(p));
    p.max_iterations = sweeps - 1;
    EXPECT_FALSE(plan.solves(p));
    p.max_iterations = 0;
    EXPECT_FALSE(plan.solves(p));
  }
}

TEST(Trl_Assigner, OverTheLimitFailsAtOnceOrGoesOn) {
  // A user too far away: its need alone exceeds its power limit in every strategy.
  Plan far;
  far.add(station(0));
  far.add(user(0, 0.01, 0.01));
  far.set_gain(0, 0, 1e-18);
  for (int strategy = 0; strategy < 4; ++strategy) EXPECT_FALSE(far.solves(settings(strategy))) << "strategy " << strategy;

  // From above, a strong user at its full power first pushes a weak one over its limit; as
  // the powers fall the plan settles. The going-on strategies reach it, and with a single
  // sweep allowed they fail where the first sweep overshoots.
  Plan plan;
  plan.add(station(0));
  Trl_Rx strong = user(0, 0.05, 0.01);
  strong.max_power = 1;
  plan.add(strong);
  Trl_Rx weak = user(1, 0.05, 0.01);
  weak.max_power = 0.05;
  plan.add(weak);
  plan.set_gain(0, 0, 1e-9);
  plan.set_gain(0, 1, 1e-13);
  for (int strategy : {1, 3}) {
    Trl_Assigner::parameters p = settings(strategy);
    plan.prepare(p);
    ASSERT_GT(plan.assigner.rx_max_power[0] * 1e-9 * 0.5 * 0.05 / 1e-13, 0.05);
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    EXPECT_TRUE(a.solve(false)) << "strategy " << strategy;
    expect_uplink_holds(plan, a, plan.assigner.tolerance);
    p.max_iterations = 1;
    EXPECT_FALSE(plan.solves(p)) << "strategy " << strategy;
  }
  // The same plan from below never overshoots.
  for (int strategy : {0, 2}) EXPECT_TRUE(plan.solves(settings(strategy))) << "strategy " << strategy;

  // Strategies outside 0 to 3 solve nothing.
  EXPECT_FALSE(plan.solves(settings(4)));
}

TEST(Trl_Assigner, DownlinkEdgeCases) {
  // An idle switched-on station: it takes no part, costs not even its pilot, still counts.
  {
    Plan plan;
    plan.add(station(0));
    plan.add(station(1, 5000, 0));
    plan.add(user(0, 0.01, 0.02));
    plan.set_gain(0, 0, 1e-9);
    plan.set_gain(1, 0, 1e-15);
    plan.prepare(settings());
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    ASSERT_TRUE(a.solve(true));
    EXPECT_EQ(a.used, 2);
    EXPECT_EQ(a.tx_downlink[1], 0);
    EXPECT_GT(a.tx_downlink[0], 2);
    expect_downlink_holds(plan, a);
  }
  // A negative total power fails although every limit would hold; three users each with a
  // share of 1/2 at orthogonality 1 make the own-cell system singular in sign: 1 - 3/2 < 0.
  {
    Plan plan;
    Trl_Tx big = station(0);
    big.orthogonality = 1;
    big.max_power = 1e30;
    big.max_channel_power = 1e30;
    plan.add(big);
    for (int r = 0; r < 3; ++r) {
      plan.add(user(r, 0.001, 1.0));
      plan.set_gain(0, r, 1e-9);
    }
    plan.prepare(settings());
    EXPECT_NEAR(plan.assigner.downlink_share(0, 0), 0.5, 1e-12);
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    EXPECT_FALSE(a.solve(true));
    // Without the downlink step the uplink alone passes.
    EXPECT_TRUE(a.solve(false));
  }
  // With validation off a station over its power limit passes; with it on, it fails; the
  // caller's flag and the assigner's flag must both be on for the step to run.
  {
    Plan plan;
    Trl_Tx weak = station(0);
    weak.max_power = 2.0000001;  // pilot alone is 2 W
    plan.add(weak);
    plan.add(user(0, 0.01, 0.02));
    plan.set_gain(0, 0, 1e-11);
    Trl_Assigner::parameters p = settings();
    plan.prepare(p);
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    EXPECT_FALSE(a.solve(true));
    a.tx_downlink[0] = -7;
    EXPECT_TRUE(a.solve(false));
    EXPECT_EQ(a.tx_downlink[0], -7);  // untouched when the step is skipped
    p.validate_downlink = false;
    plan.prepare(p);
    EXPECT_TRUE(a.solve(true));
  }
  // A user whose channel power exceeds the station's channel limit fails the step.
  {
    Plan plan;
    Trl_Tx tx = station(0);
    tx.max_channel_power = 1e-3;
    plan.add(tx);
    plan.add(user(0, 0.01, 0.02));
    plan.set_gain(0, 0, 1e-13);
    EXPECT_FALSE(plan.solves(settings(), true));
  }
}

TEST(Trl_Assigner, StationVectorsAreReadByNumberAndGainRowsByPosition) {
  // A working list with the numbers 1, 0 at positions 0, 1: the solver copies gain rows by
  // position, and reads pilot, orthogonality and limits with the base station number.
  Plan plan;
  Trl_Tx a0 = station(1);
  a0.pilot_power = 1;
  Trl_Tx a1 = station(0, 1000, 0);
  a1.pilot_power = 3;
  plan.add(a0);
  plan.add(a1);
  plan.add(user(0, 0.01, 0.02));
  plan.set_gain(1, 0, 1e-9);   // position 0 hears the user well
  plan.set_gain(0, 0, 1e-14);
  plan.prepare(settings());
  Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  EXPECT_EQ(a.tx_numbers[0], 1);
  EXPECT_EQ(a.rows[1], 0);
  a.select_all();
  ASSERT_TRUE(a.solve(true));
  EXPECT_EQ(a.serving[0], 0);  // row 0 = position 0 = number 1
  EXPECT_EQ(a.rows[0], 1);
  // Pilot read by number 1 is the pilot filled at position 1: 3 W, and the power lands at
  // index 1 of the station vector.
  const double G = 1e-9, N = kT * W;
  const double share = 0.02 / (0.4 * 0.02 + 1);
  const double x = (3 + share * N / G) / (1 - 0.4 * share);
  EXPECT_NEAR(a.tx_downlink[1], x, x * 1e-12);
  EXPECT_EQ(a.tx_downlink[0], 0);
  a.accumulate();
  EXPECT_EQ(a.tx_uplink[1], a.rx_uplink[0]);
  EXPECT_EQ(a.tx_uplink[0], 0);
}

TEST(Trl_Assigner, SubsetsUseCompactRows) {
  // Three stations, the middle one switched off: rows 0 and 1 are positions 0 and 2.
  Plan plan;
  for (int t = 0; t < 3; ++t) plan.add(station(t, 1000.0 * t, 0));
  for (int r = 0; r < 4; ++r) plan.add(user(r, 0.01, 0.02, 1000.0 * (r % 3), 10));
  for (int t = 0; t < 3; ++t)
    for (int r = 0; r < 4; ++r) plan.set_gain(t, r, t == r % 3 ? 1e-9 : 1e-12);
  plan.prepare(settings());
  Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  tk::list<int> on;
  on.append(0);
  on.append(2);
  a.select(on);
  EXPECT_EQ(a.used, 2);
  EXPECT_EQ(a.selected[1], 0);
  a.initial_servers();
  ASSERT_TRUE(a.solve(true));
  EXPECT_EQ(a.rows[0], 0);
  EXPECT_EQ(a.rows[1], 2);
  EXPECT_EQ(a.serving[0], 0);
  EXPECT_EQ(a.serving[2], 1);
  EXPECT_EQ(a.serving[3], 0);
  EXPECT_EQ(a.tx_downlink[1], 0);
  expect_uplink_holds(plan, a, plan.assigner.tolerance);
  expect_downlink_holds(plan, a);
}

TEST(Trl_Assigner, AStreetOfStationsWithTheSimpleModel) {
  // Forty users along a street between four stations, solved by all four strategies; the
  // result is checked from its own powers, and the strategies agree on the powers.
  Plan plan;
  Trl_Motorola simple(32.2, 35.1);
  for (int t = 0; t < 4; ++t) plan.add(station(t, 500.0 * t + 250, 0));
  for (int r = 0; r < 40; ++r) plan.add(user(r, 0.004, 0.01, 50.0 * r + 7, 20.0 * (r % 3)));
  for (const Trl_Tx& tx : plan.txv)
    for (const Trl_Rx& rx : plan.rxv) plan.set_gain(tx.number, rx.number, simple.gain(tx, rx));
  std::vector<double> first;
  for (int strategy = 0; strategy < 4; ++strategy) {
    plan.prepare(settings(strategy));
    Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    a.select_all();
    a.initial_servers();
    ASSERT_TRUE(a.solve(true)) << "strategy " << strategy;
    expect_uplink_holds(plan, a, plan.assigner.tolerance);
    expect_downlink_holds(plan, a);
    if (first.empty()) {
      for (int r = 0; r < 40; ++r) first.push_back(a.rx_uplink[r]);
    } else {
      for (int r = 0; r < 40; ++r)
        EXPECT_NEAR(a.rx_uplink[r], first[r], 0.02 * first[r]) << "strategy " << strategy;
    }
  }
}

TEST(Trl_Assigner, SimplePrepareIsTheModelOnOneAndTwoThreads) {
  // Uneven rows with users out of list order and an odd count, and a single user on many
  // stations (fewer users than threads, still enough pairs for two threads).
  struct Shape {
    int stations, users;
  };
  Trl_Motorola simple(32.2, 35.1);
  for (Shape shape : {Shape{7, 3001}, Shape{20000, 1}}) {
    tk::list<Trl_Tx> tx;
    tk::list<Trl_Rx> rx;
    std::vector<Trl_Tx> txv;
    std::vector<Trl_Rx> rxv;
    for (int t = 0; t < shape.stations; ++t) {
      Trl_Tx s = station(t, 41.0 * (t % 97), 13.0 * t);
      s.gain = std::pow(10.0, 0.1 * (t % 5));
      s.orthogonality = 0.3 + 0.1 * (t % 3);
      s.noise_factor = 1 + 0.25 * (t % 4);
      tx.append(s);
      txv.push_back(s);
    }
    for (int r = 0; r < shape.users; ++r) {
      const int number = (r * 1237) % shape.users;  // 1237 is prime to 3001
      Trl_Rx u = user(number, 0.01 + 1e-5 * r, 0.02 + 3e-6 * r, (r * 37) % 1500, (r * 91) % 1300);
      u.gain = r % 3 ? 1 : 0.5;
      u.max_power = 0.1 + 1e-4 * r;
      u.noise_factor = 1 + 1e-3 * (r % 7);
      rx.append(u);
      rxv.push_back(u);
    }
    Trl_Assigner one, two;
    Trl_Assigner::parallel_fill = false;
    one.prepare(tx, rx, settings(), simple);
    Trl_Assigner::parallel_fill = true;
    two.prepare(tx, rx, settings(), simple);
    two.prepare(tx, rx, settings(), simple);  // again, into the kept storage
    const int n = shape.users;
    double sum = 0;
    for (int r = 0; r < n; ++r) {
      const Trl_Rx& u = rxv[r];
      sum += u.max_power;
      for (const Trl_Assigner* a : {&one, &two}) {
        EXPECT_EQ(a->gamma_up[r], 1 / W * u.ebno_up * u.rate_up * 1000);
        EXPECT_EQ(a->gamma_down[r], 1 / W * u.ebno_down * u.rate_down * 1000);
        EXPECT_DOUBLE_EQ(a->rx_noise[r], kT * W * u.noise_factor);
        EXPECT_EQ(a->rx_max_power[r], u.max_power);
        EXPECT_EQ(a->rx_activity[r], u.activity);
      }
    }
    for (int t = 0; t < shape.stations; ++t) {
      ASSERT_EQ(std::memcmp(one.path_gain.row(t), two.path_gain.row(t), n * sizeof(double)), 0) << t;
      const double g = one.gamma_down[n - 1];
      EXPECT_EQ(two.downlink_share(t, n - 1), g / (txv[t].orthogonality * g + 1));
      EXPECT_DOUBLE_EQ(two.tx_noise[t], kT * W * txv[t].noise_factor);
      EXPECT_EQ(two.tx_orthogonality[t], txv[t].orthogonality);
    }
    for (int t = 0; t < shape.stations; t += 1 + shape.stations / 8)
      for (int r = 0; r < n; r += 7) {
        const double expected = simple.gain(txv[t], rxv[r]);
        EXPECT_NEAR(two.path_gain(t, rxv[r].number), expected, 1e-13 * expected);
      }
    // The fill alone, as the benchmarks call it, gives the prepared table.
    Trl_Assigner alone;
    alone.make_tables(tx, rx, settings());
    alone.fill_path_gains(tx, rx, simple);
    for (int t = 0; t < shape.stations; ++t)
      ASSERT_EQ(std::memcmp(alone.path_gain.row(t), two.path_gain.row(t), n * sizeof(double)), 0) << t;
    EXPECT_EQ(one.rx_max_power_sum, sum);
    EXPECT_EQ(two.rx_max_power_sum, sum);
  }
}
