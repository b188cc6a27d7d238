// The solution record: sums, objective, the order of solutions, copying, and the report
// written out by hand for a tiny plan.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Wang.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"

namespace {

Trl_Tx station(int number) {
  return Trl_Tx(tk::d3_point(0, 0, 30), tk::string("BS"), number, 20, 2, 1, 1, 1, 0.4, 0);
}

Trl_Rx user(int number, double max_power) {
  return Trl_Rx(tk::d3_point(0, 0, 1.5), number, 1, 1, 1, max_power, 1e-11, 1, 0.5, 12.2, 12.2,
                0);
}

// Stations and users on lossless links, by default two stations and three users with the
// limits 0.1, 0.2 and 0.5 W; the powers are set by hand.
struct Fixture {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  Trl_Wang lossless{4, 1, 1};
  Trl_Assigner assigner;
  explicit Fixture(int stations = 2, const std::vector<double>& limits = {0.1, 0.2, 0.5}) {
    for (int k = 0; k < stations; ++k) tx.append(station(k));
    for (size_t r = 0; r < limits.size(); ++r) rx.append(user(static_cast<int>(r), limits[r]));
    Trl_Assigner::parameters p;
    assigner.prepare(tx, rx, p, lossless);
  }
  Trl_Assignment make(int kind, double p0, double p1, double p2) {
    Trl_Assignment a(assigner, kind, tx);
    a.select_all();
    a.serving[0] = 1;
    a.serving[1] = 0;
    a.serving[2] = 1;
    a.rx_uplink[0] = p0;
    a.rx_uplink[1] = p1;
    a.rx_uplink[2] = p2;
    return a;
  }
};

}  // namespace

TEST(Trl_Assignment, ConstructionAndSelection) {
  Fixture f;
  Trl_Assignment a(f.assigner, Trl_Assignment::max_power, f.tx);
  EXPECT_EQ(a.tx_count, 2);
  EXPECT_EQ(a.rx_count, 3);
  EXPECT_EQ(a.used, 2);
  EXPECT_EQ(a.selected[0], 0);
  EXPECT_EQ(a.selected[1], 0);
  EXPECT_EQ(a.serving[2], 0);
  EXPECT_EQ(a.rows[1], 1);
  EXPECT_EQ(a.objective_kind, 1);
  a.select_all();
  EXPECT_EQ(a.selected[1], 1);
  tk::list<int> one;
  one.append(1);
  a.select(one);
  EXPECT_EQ(a.used, 1);
  EXPECT_EQ(a.selected[0], 0);
  EXPECT_EQ(a.selected[1], 1);
}

TEST(Trl_Assignment, AccumulateAndObjective) {
  Fixture f;
  Trl_Assignment a = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.02);
  a.accumulate();
  EXPECT_DOUBLE_EQ(a.tx_uplink[0], 0.01);
  EXPECT_DOUBLE_EQ(a.tx_uplink[1], 0.05 + 0.02);
  EXPECT_DOUBLE_EQ(a.uplink_sum, 0.08);
  EXPECT_EQ(a.uplink_max, 0.05);
  // "PS": the sum over the sum of the limits 0.8 W.
  EXPECT_DOUBLE_EQ(a.objective(), 0.08 / 0.8);
  // "MP": the largest relative power, 0.05 / 0.1; the absolute maximum is another measure.
  a.objective_kind = Trl_Assignment::max_power;
  EXPECT_DOUBLE_EQ(a.objective(), 0.5);
  a.objective_kind = 7;
  EXPECT_EQ(a.objective(), 0);
  // Clamped at 1.
  Trl_Assignment b = f.make(Trl_Assignment::max_power, 0.3, 0.01, 0.02);
  EXPECT_EQ(b.objective(), 1);
  Trl_Assignment c = f.make(Trl_Assignment::power_sum, 0.3, 0.3, 0.3);
  EXPECT_EQ(c.objective(), 1);
}

TEST(Trl_Assignment, OrderOfSolutions) {
  Fixture f;
  Trl_Assignment best = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.02);
  best.accumulate();
  Trl_Assignment cand = f.make(Trl_Assignment::power_sum, 0.5, 0.5, 0.5);
  // Fewer base stations always win, whatever the power.
  tk::list<int> one;
  one.append(0);
  cand.select(one);
  cand.serving[0] = cand.serving[2] = 0;
  EXPECT_TRUE(cand.better_than(best, true));
  EXPECT_FALSE(best.better_than(cand, true));
  // Equal counts: the lower sum wins; an equal sum is no improvement.
  Trl_Assignment same = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.02);
  EXPECT_FALSE(same.better_than(best, true));
  Trl_Assignment lower = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.019);
  EXPECT_TRUE(lower.better_than(best, false));
  EXPECT_DOUBLE_EQ(lower.uplink_sum, 0.079);  // accumulated in step 3
  // "MP" compares the absolute maximum in W.
  Trl_Assignment mp_best = f.make(Trl_Assignment::max_power, 0.05, 0.01, 0.02);
  mp_best.accumulate();
  Trl_Assignment mp = f.make(Trl_Assignment::max_power, 0.01, 0.049, 0.3);
  EXPECT_FALSE(mp.better_than(mp_best, true));  // 0.3 W is larger, though 0.3/0.5 < 0.05/0.1
  Trl_Assignment mp2 = f.make(Trl_Assignment::max_power, 0.04, 0.01, 0.04);
  EXPECT_TRUE(mp2.better_than(mp_best, true));
  // The other is taken as it stands: not accumulated, its sum is 0, nothing is lower.
  Trl_Assignment raw = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.02);
  EXPECT_FALSE(lower.better_than(raw, true));
  // Another kind never improves at equal counts.
  Trl_Assignment odd = f.make(5, 0, 0, 0);
  EXPECT_FALSE(odd.better_than(best, true));
}

TEST(Trl_Assignment, CopyKeepsAssignerAndCounts) {
  Fixture f;
  Trl_Assignment a = f.make(Trl_Assignment::power_sum, 0.05, 0.01, 0.02);
  a.accumulate();
  Trl_Assignment b(f.assigner, Trl_Assignment::max_power, f.tx);
  b.tx_count = 9;
  b = a;
  EXPECT_EQ(b.tx_count, 9);
  EXPECT_EQ(b.rx_count, 3);
  EXPECT_EQ(b.objective_kind, Trl_Assignment::power_sum);
  EXPECT_EQ(b.uplink_sum, a.uplink_sum);
  EXPECT_EQ(b.uplink_max, a.uplink_max);
  EXPECT_EQ(b.serving[0], 1);
  EXPECT_EQ(b.rx_uplink[2], 0.02);
  EXPECT_EQ(&b.assigner, &f.assigner);
  // Separate storage.
  b.rx_uplink[2] = 1;
  EXPECT_EQ(a.rx_uplink[2], 0.02);
}

TEST(Trl_Assignment, ReportOfATinyPlanWrittenByHand) {
  // One station, one user, lossless link, downlink figures set by hand.
  Fixture f(1, {0.125});
  Trl_Assignment a(f.assigner, Trl_Assignment::power_sum, f.tx);
  a.select_all();
  a.rx_uplink[0] = 0.001;    // 0 dBm
  a.rx_downlink[0] = 0.01;   // 10 dBm
  a.tx_downlink[0] = 2.01;
  a.accumulate();
  std::ostringstream out;
  out << a;
  const std::string expected =
      "# number of rx in input               : 1\n"
      "# number of tx in input               : 1\n"
      "# number of tx used in assignation    : 1\n"
      "# maximum rx uplink power             : 0 [dBm]\n"
      "# minimum rx uplink power             : 0 [dBm]\n"
      "# total transmitted rx uplink power   : 0.001 [W]\n"
      "# maximum rx downlink power           : 10 [dBm]\n"
      "# minimum rx downlink power           : 10 [dBm]\n"
      "# total transmitted rx downlink power : 0.01 [W]\n"
      "# -----------------------------------\n"
      "# rx number, tx assigned, rx uplink power [dBm], rx downlink power [dBm]\n"
      "0, 0, 0, 10\n"
      "# -----------------------------------\n"
      "# tx number, tx uplink power [W], tx downlink power [W]\n"
      "0, 0.001, 2.01\n";
  EXPECT_EQ(out.str(), expected);
}

TEST(Trl_Assignment, ReportWithSixDigitsAndRowsNotNumbers) {
  // Two users on the second of two stations, downlink off: zeros come out as -inf dBm, and
  // the "tx assigned" column holds the row, not the station number.
  Fixture f(2, {0.125, 0.125});
  Trl_Assignment a(f.assigner, Trl_Assignment::power_sum, f.tx);
  tk::list<int> second;
  second.append(1);
  a.select(second);
  a.rows[0] = 1;
  a.rx_uplink[0] = 2e-3;
  a.rx_uplink[1] = 1.23456789e-5;
  a.accumulate();
  std::ostringstream out;
  out << a;
  const auto g = [](double v) {
    char text[40];
    std::snprintf(text, sizeof text, "%g", v);
    return std::string(text);
  };
  const std::string up0 = g(10 * std::log10(2e-3) + 30), up1 = g(10 * std::log10(1.23456789e-5) + 30);
  const std::string expected =
      "# number of rx in input               : 2\n"
      "# number of tx in input               : 2\n"
      "# number of tx used in assignation    : 1\n"
      "# maximum rx uplink power             : " + up0 + " [dBm]\n"
      "# minimum rx uplink power             : " + up1 + " [dBm]\n"
      "# total transmitted rx uplink power   : " + g(2e-3 + 1.23456789e-5) + " [W]\n"
      "# maximum rx downlink power           : -inf [dBm]\n"
      "# minimum rx downlink power           : -inf [dBm]\n"
      "# total transmitted rx downlink power : 0 [W]\n"
      "# -----------------------------------\n"
      "# rx number, tx assigned, rx uplink power [dBm], rx downlink power [dBm]\n"
      "0, 0, " + up0 + ", -inf\n"
      "1, 0, " + up1 + ", -inf\n"
      "# -----------------------------------\n"
      "# tx number, tx uplink power [W], tx downlink power [W]\n"
      "0, 0, 0\n"
      "1, " + g(2e-3 + 1.23456789e-5) + ", 0\n";
  EXPECT_EQ(out.str(), expected);
}
