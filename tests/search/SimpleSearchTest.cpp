// The driving loop of the simple search on small random plans (fixed seeds), beside a plain
// loop written here: a fresh assignment for every subset, solved on its own, kept by the
// ordering rules spelled out below. Both must see the same subsets in the same order and end
// with the same best assignment, result, status lines and standard output.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "search/Trl_Assignment.h"
#include "search/Trl_HbbWalker.h"
#include "search/Trl_SimpleSearch.h"
#include "support/RandomPlan.h"

namespace {

using Plan = RandomPlan;

// Every base station selected and solved, summed up when it solves.
bool solve_full(Trl_Assignment& full, bool validate) {
  full.select_all();
  if (!full.solve(validate)) return false;
  full.accumulate();
  return true;
}

std::vector<int> members(const Trl_Assignment& a) {
  std::vector<int> m;
  for (int k = 0; k < a.tx_count; ++k)
    if (a.selected[k]) m.push_back(k);
  return m;
}

// The order of solutions written out: fewer base stations win; at equal count the strictly
// lower uplink sum ("PS") or maximum ("MP"). The sums are formed here from the user powers.
bool better(const Trl_Assignment& a, const Trl_Assignment& b) {
  if (a.used != b.used) return a.used < b.used;
  double sum_a = 0, sum_b = 0, max_a = -1e300, max_b = -1e300;
  for (int r = a.rx_count - 1; r >= 0; --r) {
    sum_a += a.rx_uplink[r];
    sum_b += b.rx_uplink[r];
    max_a = std::max(max_a, a.rx_uplink[r]);
    max_b = std::max(max_b, b.rx_uplink[r]);
  }
  return a.objective_kind == Trl_Assignment::power_sum ? sum_a < sum_b : max_a < max_b;
}

struct Outcome {
  std::vector<std::vector<int>> visited;
  std::vector<std::string> status;
  std::string out;
  int result = 0;
};

struct Case {
  unsigned seed;
  int n, m, fixed, S, kind;
  bool validate;
  int stop_after;  // 0: never
};

std::string describe(const Case& c) {
  return "seed " + std::to_string(c.seed) + " n " + std::to_string(c.n) + " f " +
         std::to_string(c.fixed) + " S " + std::to_string(c.S) + " kind " +
         std::to_string(c.kind) + " validate " + std::to_string(c.validate) + " stop " +
         std::to_string(c.stop_after);
}

// The search as the program runs it.
Outcome run_search(Plan& plan, const Case& c, Trl_Assignment& best) {
  Outcome o;
  Trl_Assignment candidate(plan.assigner, c.kind, plan.tx);
  Trl_Assignment* current = &best;
  Trl_SimpleSearch search(&current, c.S, c.validate);
  search.show_status = [&o](const tk::string& s) { o.status.push_back(s.str()); };
  int polls = 0;
  search.stop_requested = [&] {
    o.visited.push_back(members(candidate));
    return c.stop_after != 0 && ++polls >= c.stop_after;
  };
  testing::internal::CaptureStdout();
  o.result = search.hbb_search(c.fixed, candidate, 0);
  o.out = testing::internal::GetCapturedStdout();
  return o;
}

// The plain loop: the walker asked in the same way, every subset in an assignment of its own.
Outcome run_plain(Plan& plan, const Case& c, Trl_Assignment& best) {
  Outcome o;
  Trl_HbbWalker walker(c.n, c.S, c.fixed);
  bool improved = false;
  int polls = 0;
  o.result = 3;
  while (walker.next()) {
    Trl_Assignment fresh(plan.assigner, c.kind, plan.tx);
    tk::list<int> positions;
    for (int k = 0; k < c.n; ++k)
      if (std::find(walker.removed.begin(), walker.removed.end(), k) == walker.removed.end())
        positions.append(k);
    fresh.select(positions);
    const bool ok = fresh.solve(c.validate && best.used >= fresh.used);
    if (ok) {
      walker.succeeded();
      fresh.accumulate();
      if (better(fresh, best)) {
        improved = true;
        best = fresh;
        std::ostringstream line;
        line << "power sum: " << best.uplink_sum << "\n";
        o.out += line.str();
        char text[200];
        std::snprintf(text, sizeof text, " Best assignment: %d BS, %g [W].", best.used,
                      best.uplink_sum);
        o.status.push_back(text);
      }
    } else {
      walker.failed();
    }
    o.visited.push_back(members(fresh));
    if (c.stop_after != 0 && ++polls >= c.stop_after) {
      o.result = 4;
      return o;
    }
  }
  if (improved) o.result = 2;
  if (walker.exhausted) o.result = 1;
  return o;
}

void expect_same_assignment(const Trl_Assignment& a, const Trl_Assignment& b,
                            const std::string& where) {
  ASSERT_EQ(a.used, b.used) << where;
  EXPECT_EQ(members(a), members(b)) << where;
  EXPECT_EQ(a.uplink_sum, b.uplink_sum) << where;
  for (int r = 0; r < a.rx_count; ++r) {
    EXPECT_EQ(a.serving[r], b.serving[r]) << where;
    EXPECT_EQ(a.rx_uplink[r], b.rx_uplink[r]) << where;
    EXPECT_EQ(a.rx_downlink[r], b.rx_downlink[r]) << where;
  }
  for (int k = 0; k < a.used; ++k) EXPECT_EQ(a.rows[k], b.rows[k]) << where;
  for (int k = 0; k < a.tx_count; ++k) EXPECT_EQ(a.tx_downlink[k], b.tx_downlink[k]) << where;
}

}  // namespace

TEST(SimpleSearch, StatusAndResultTexts) {
  EXPECT_EQ(Trl_SimpleSearch::best_status(0, 7, 0.25).str(),
            " Best assignment: 7 BS, 0.25 [W].");
  EXPECT_EQ(Trl_SimpleSearch::best_status(3, 12, 1.5e-5).str(),
            " (3) Best assignment: 12 BS, 1.5e-05 [W].");
  EXPECT_EQ(Trl_SimpleSearch::result_text(1, 5, 0.125).str(),
            "Optimum found: \\n\\red 5 \\blue base stations and \\red 1.250000e-01 \\blue [W] "
            "uplink power sum.\\n For more details store and see the assignment file.");
  for (int result : {2, 3, 4})
    EXPECT_EQ(Trl_SimpleSearch::result_text(result, 9, 2.0).str(),
              "Best solution found so far: \\n\\red 9 \\blue base stations and \\red "
              "2.000000e+00 \\blue [W] uplink power sum.\\n For more details store and "
              "examine the assignment file.");
}

// Many random small plans, both ways; the best is also checked against every subset visited.
TEST(SimpleSearch, AgreesWithAPlainLoopOverTheSameSubsets) {
  std::vector<Case> cases;
  unsigned seed = 1;
  for (int S : {0, 1, 7})
    for (int fixed : {0, 1, 2})
      for (int kind : {0, 1})
        for (bool validate : {true, false})
          for (int stop_after : {0, 3}) {
            const int n = 5 + static_cast<int>(seed % 5);
            cases.push_back({seed++, n, 25 + static_cast<int>(seed % 4) * 10, fixed, S, kind,
                             validate, stop_after});
          }
  int searched = 0, ends[5] = {0};
  for (const Case& c : cases) {
    const std::string where = describe(c);
    Plan plan(c.seed, c.n, c.m, 0, c.validate);
    Trl_Assignment full(plan.assigner, c.kind, plan.tx);
    full.select_all();
    full.initial_servers();
    if (!solve_full(full, c.validate)) continue;  // the command would end before the search
    ++searched;

    Trl_Assignment best_search(full), best_plain(full);
    const Outcome s = run_search(plan, c, best_search);
    const Outcome p = run_plain(plan, c, best_plain);
    EXPECT_EQ(s.visited, p.visited) << where;
    EXPECT_EQ(s.result, p.result) << where;
    EXPECT_EQ(s.status, p.status) << where;
    EXPECT_EQ(s.out, p.out) << where;
    expect_same_assignment(best_search, best_plain, where);
    if (c.stop_after != 0) {
      EXPECT_EQ(s.result == 4, s.visited.size() == 3u) << where;
    }
    ++ends[s.result];

    // Every subset visited, solved on its own: none beats the final best, and the final best
    // is one of them or the full set.
    bool found = members(best_search) == members(full);
    for (const auto& subset : s.visited) {
      for (int k = 0; k < c.fixed; ++k) EXPECT_EQ(subset.at(k), k) << where;
      Trl_Assignment a(plan.assigner, c.kind, plan.tx);
      tk::list<int> positions;
      for (int k : subset) positions.append(k);
      a.select(positions);
      if (subset.empty() || !a.solve(c.validate && best_search.used >= a.used)) continue;
      a.accumulate();
      EXPECT_FALSE(better(a, best_search)) << where;
      if (subset == members(best_search)) found = true;
    }
    EXPECT_TRUE(found) << where;
  }
  // The plans are varied enough to reach the walk's ends and the stop.
  EXPECT_GT(searched, static_cast<int>(cases.size()) / 2);
  EXPECT_GT(ends[1], 0);
  EXPECT_GT(ends[2], 0);
  EXPECT_GT(ends[4], 0);
}

// With S = 31 the walk never starts: no candidate, no poll, result 3.
TEST(SimpleSearch, LimitFromThirtyOneEndsAtOnceWithoutImprovement) {
  Plan plan(7, 6, 20);
  Trl_Assignment full(plan.assigner, 1, plan.tx);
  ASSERT_TRUE(solve_full(full, true));
  Trl_Assignment* current = &full;
  Trl_SimpleSearch search(&current, 31, true);
  int polls = 0;
  search.stop_requested = [&polls] { return ++polls > 1000; };
  Trl_Assignment candidate(plan.assigner, 1, plan.tx);
  testing::internal::CaptureStdout();
  EXPECT_EQ(search.hbb_search(0, candidate, 0), 3);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(polls, 0);
  EXPECT_EQ(full.used, 6);
}

// A stop at the first poll: result 4 and the best is what it was, or the first candidate if
// that one won.
TEST(SimpleSearch, StopAtTheFirstPollEndsWithResultFour) {
  Plan plan(11, 8, 30);
  Trl_Assignment full(plan.assigner, 0, plan.tx);
  ASSERT_TRUE(solve_full(full, true));
  Trl_Assignment* current = &full;
  Trl_SimpleSearch search(&current, 7, true);
  std::vector<std::string> status;
  search.show_status = [&status](const tk::string& s) { status.push_back(s.str()); };
  int polls = 0;
  search.stop_requested = [&polls] { return ++polls == 1; };
  Trl_Assignment candidate(plan.assigner, 0, plan.tx);
  testing::internal::CaptureStdout();
  EXPECT_EQ(search.hbb_search(0, candidate, 2), 4);
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(polls, 1);
  EXPECT_LE(status.size(), 1u);
  if (!status.empty()) {
    EXPECT_EQ(status[0], Trl_SimpleSearch::best_status(2, full.used, full.uplink_sum).str());
    EXPECT_EQ(status[0].rfind(" (2) Best assignment: ", 0), 0u);
    EXPECT_EQ(out.rfind("power sum: ", 0), 0u);
  } else {
    EXPECT_EQ(out, "");
    EXPECT_EQ(full.used, 8);
  }
}

// Equal size and equal power is no improvement. One user midway between stations 1 and 2
// (exact mirror images), station 0 far off. The walk tries {2} first (an improvement on the
// full set), then {1}, equal in every power: the first found stays.
TEST(SimpleSearch, EqualSizeAndPowerIsNoImprovement) {
  for (int kind : {0, 1}) {
    Plan plan;
    const double xs[] = {0, 400, 600};
    for (int t = 0; t < 3; ++t) plan.tx.append(default_station(tk::d3_point(xs[t], t == 0 ? 0 : 500, 30), t));
    plan.rx.append(default_user(tk::d3_point(500, 500, 1.5), 0));
    plan.prepare();
    Trl_Assignment full(plan.assigner, kind, plan.tx);
    ASSERT_TRUE(solve_full(full, true));
    Trl_Assignment* current = &full;
    Trl_SimpleSearch search(&current, 0, true);
    std::vector<std::string> status;
    search.show_status = [&status](const tk::string& s) { status.push_back(s.str()); };
    Trl_Assignment candidate(plan.assigner, kind, plan.tx);
    std::vector<std::vector<int>> visited;
    search.stop_requested = [&] {
      visited.push_back(members(candidate));
      return false;
    };
    testing::internal::CaptureStdout();
    const int result = search.hbb_search(0, candidate, 0);
    const std::string out = testing::internal::GetCapturedStdout();
    ASSERT_GE(visited.size(), 2u);
    EXPECT_EQ(visited[0], (std::vector<int>{2}));
    EXPECT_EQ(visited[1], (std::vector<int>{1}));
    EXPECT_EQ(members(full), (std::vector<int>{2}));
    EXPECT_EQ(status.size(), 1u);
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1);
    EXPECT_EQ(result, 1);  // the walk ran out
  }
}
