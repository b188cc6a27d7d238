// The subset walk, driven by feasibility tables written here. The expected sequences were
// worked out by hand from the walking rules; each comment shows the removed positions.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "search/Trl_HbbWalker.h"
#include "support/ErrorGuard.h"

namespace {

using Feasible = std::function<bool(const std::vector<int>&)>;

std::string show(const std::vector<int>& members) {
  std::string s = "{";
  for (size_t i = 0; i < members.size(); ++i) s += (i ? "," : "") + std::to_string(members[i]);
  return s + "}";
}

// One visited candidate with the walker's phase at the time it was judged.
struct Visit {
  std::vector<int> members;
  bool feasible;
  bool halving;
};

struct Walk {
  std::vector<std::string> visited;
  std::vector<Visit> visits;
  std::string end;  // "exhausted", "stagnation" or "running" (cut off by max_steps)
  int stagnation = 0;
};

Walk run(int n, int S, int f, const Feasible& feasible, int max_steps = 100000) {
  Trl_HbbWalker walker(n, S, f);
  tk::array<int> selected(n);
  Walk walk;
  for (int i = 0; i < max_steps; ++i) {
    if (!walker.next()) {
      walk.end = walker.exhausted ? "exhausted" : "stagnation";
      walk.stagnation = walker.stagnation;
      return walk;
    }
    int used = -1;
    walker.write(selected, used);
    std::vector<int> members;
    for (int k = 0; k < n; ++k) {
      EXPECT_TRUE(selected[k] == 0 || selected[k] == 1);
      if (selected[k]) members.push_back(k);
    }
    EXPECT_EQ(used, static_cast<int>(members.size()));
    const bool ok = feasible(members);
    walk.visited.push_back(show(members));
    walk.visits.push_back({members, ok, walker.halving});
    if (ok) walker.succeeded(); else walker.failed();
  }
  walk.end = "running";
  walk.stagnation = walker.stagnation;
  return walk;
}

Feasible at_least(int size) {
  return [size](const std::vector<int>& m) { return static_cast<int>(m.size()) >= size; };
}

Feasible only(std::vector<std::vector<int>> sets) {
  return [sets](const std::vector<int>& m) {
    for (const auto& s : sets)
      if (s == m) return true;
    return false;
  };
}

using Seq = std::vector<std::string>;

}  // namespace

TEST(HbbWalker, StagnationLimitIsTwoToTheSMinusOneInThirtyTwoBits) {
  EXPECT_EQ(Trl_HbbWalker::limit_for(0), 0);
  EXPECT_EQ(Trl_HbbWalker::limit_for(1), 1);
  EXPECT_EQ(Trl_HbbWalker::limit_for(2), 2);
  EXPECT_EQ(Trl_HbbWalker::limit_for(7), 64);
  EXPECT_EQ(Trl_HbbWalker::limit_for(30), 1 << 29);
  // 1 << 31 is the sign bit; the arithmetic shift keeps it: -2^30.
  EXPECT_EQ(Trl_HbbWalker::limit_for(31), -1073741824);
}

// Walks worked out by hand from the walking rules.
TEST(HbbWalker, WalksVisitTheCandidatesTheRulesGive) {
  struct Case {
    int n, S, f;
    Feasible feasible;
    Seq visited;
    const char* end;
    int stagnation;  // -1: not checked
  };
  const Seq four_to_exhaustion{"{3}", "{2}", "{1,3}", "{1}", "{1,2}", "{0,3}", "{0}", "{0,2}", "{0,1}"};
  const Case cases[] = {
      // n = 2, only {1} feasible: [0,1] -> {}, then pop and raise to [1] -> {0}, then the walk
      // runs out. {1} (removed [0]) is never tried: the walk is not exhaustive, and must stay so.
      {2, 0, 0, only({{1}}), {"{}", "{0}"}, "exhausted", -1},
      {2, 1, 0, only({{1}}), {"{}", "{0}"}, "exhausted", -1},
      {2, 7, 0, only({{1}}), {"{}", "{0}"}, "exhausted", -1},
      // n = 3, sizes 2 and 3 feasible:
      // [0,1] {2} no; step 1, halving ends; raise -> [0,2] {1} no; pop, raise -> [1] {0,2} yes,
      // best 2; add 1 -> [1,2] {0} no; pop, raise -> [2] {0,1} yes; room 0, pop -> exhausted.
      // {1,2} (removed [0]) is skipped.
      {3, 0, 0, at_least(2), {"{2}", "{1}", "{0,2}", "{0}", "{0,1}"}, "exhausted", -1},
      // n = 4, sizes 2 and up feasible, no limit:
      // [0,1,2] {3} no | [0,1,3] {2} no | [0,2] {1,3} yes, best 2 | [0,2,3] {1} no |
      // [0,3] {1,2} yes | pop to [0], raise [1], add 1 -> [1,2] {0,3} yes | [1,2,3] {0} no |
      // [1,3] {0,2} yes | [2,3] {0,1} yes | exhausted. A huge limit changes nothing on so short a walk.
      {4, 0, 0, at_least(2), four_to_exhaustion, "exhausted", -1},
      {4, 30, 0, at_least(2), four_to_exhaustion, "exhausted", -1},
      // The same with S = 1 (limit 1): {2} counts 1, {1,3} counts 2 and improves (back to 0),
      // {1} counts 1, {1,2} counts 2 > 1: the next call ends the walk.
      {4, 1, 0, at_least(2), {"{3}", "{2}", "{1,3}", "{1}", "{1,2}"}, "stagnation", 2},
      // n = 4 with position 0 fixed: [1,2] {0,3} yes, best 2 (halving) | step 1, add 1 ->
      // [1,2,3] {0} no | [1,3] {0,2} yes | [2,3] {0,1} yes | exhausted. Position 0 is in every one.
      {4, 0, 1, at_least(2), {"{0,3}", "{0}", "{0,2}", "{0,1}"}, "exhausted", -1},
      // n = 8, sizes 3 and up feasible, S = 1:
      // [0,1,2,3,4] {5,6,7} yes, best 3 in the halving (no count) | step 2, add 2 -> [0..6] {7} no
      // (halving, no count) | step 1, halving ends; raise -> [0,1,2,3,4,5,7] {6} no, 1 |
      // pop, raise -> [0,1,2,3,4,6] {5,7} no, 2 | ends.
      {8, 1, 0, at_least(3), {"{5,6,7}", "{7}", "{6}", "{5,7}"}, "stagnation", -1},
      // n = 8, sizes 2 and up feasible, S = 2 (limit 2):
      // {5,6,7} yes | {7} no | {6} no, 1 | {5,7} yes, 2 then improvement to 0, best 2 |
      // add 1 -> [0,1,2,3,4,6,7] {5} no, 1 | [0,1,2,3,4,7] {5,6} yes, 2 |
      // room 0: pop to [0,1,2,3,4], raise to 5, add 1 -> [0,1,2,3,5,6] {4,7} yes, 3 | ends.
      {8, 2, 0, at_least(2), {"{5,6,7}", "{7}", "{6}", "{5,7}", "{5}", "{5,6}", "{4,7}"}, "stagnation", 3},
      // n = 8, sizes 4 and up feasible, S = 1: the first candidate fails and the bisection gives
      // two positions back; {5,6,7} comes twice.
      // [0,1,2,3,4] {5,6,7} no | step 2: [0,1,2] {3,4,5,6,7} yes, best 5 |
      // step 1, halving ends, add 1 -> [0,1,2,3] {4,5,6,7} yes, count 1 then best 4, 0 |
      // add 1 -> [0,1,2,3,4] {5,6,7} no, 1 | raise -> [0,1,2,3,5] {4,6,7} no, 2 | ends.
      {8, 1, 0, at_least(4), {"{5,6,7}", "{3,4,5,6,7}", "{4,5,6,7}", "{5,6,7}", "{4,6,7}"}, "stagnation", -1},
      // S = 31 gives a negative limit: the very first call ends the walk, not by exhaustion.
      {6, 31, 0, at_least(1), {}, "stagnation", -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "n " << c.n << " S " << c.S << " f " << c.f);
    const Walk w = run(c.n, c.S, c.f, c.feasible);
    EXPECT_EQ(w.visited, c.visited);
    EXPECT_EQ(w.end, c.end);
    if (c.stagnation >= 0) { EXPECT_EQ(w.stagnation, c.stagnation); }
  }
}

// n = 1: step starts at 0, the first candidate removes position 0, and an infeasible empty
// candidate halves a step of 0 to 0, which gives nothing back: the same empty candidate
// comes again and again, inside the halving phase, so stagnation never counts.
TEST(HbbWalker, OnePositionRepeatsTheEmptyCandidateUntilStopped) {
  for (int S : {0, 1, 7}) {
    Walk w = run(1, S, 0, only({{0}}), 50);
    EXPECT_EQ(w.visited, Seq(50, "{}"));
    EXPECT_EQ(w.end, "running");
    EXPECT_EQ(w.stagnation, 0);
  }
}

// More fixed positions than a quarter or so: the first candidate removes one position, and
// when it fails the bisection is to give back more positions than were removed. The rules
// have no answer for that; the stack reports it as the list would.
TEST(HbbWalker, BisectionGivingBackMoreThanRemovedIsReportedAsAnEmptyList) {
  Trl_HbbWalker w(8, 0, 5);
  ASSERT_TRUE(w.next());
  EXPECT_EQ(w.removed, (std::vector<int>{5}));
  w.failed();
  EXPECT_TK_ERROR(w.next(), 1, "dlist::pop_back on empty list.");
}

// Counting fruitless candidates by hand from the visits: after the last strict improvement,
// every candidate judged outside the halving phase counts. A stagnation end comes exactly when
// that count first exceeds the limit; without a limit the walk only ends by exhaustion.
TEST(HbbWalker, StagnationLimitsZeroOneSevenThirtyOneEndWhereTheCountSays) {
  std::mt19937 random(12345);
  int ends_by_stagnation[32] = {0};
  for (int trial = 0; trial < 40; ++trial) {
    const int n = 6 + trial % 7;
    const int f = trial % 2;
    // A random monotone-ish table: a size threshold, with some random holes above it.
    const int threshold = 1 + static_cast<int>(random() % (n / 2 + 1));
    std::vector<unsigned> holes(8);
    for (auto& h : holes) h = random();
    Feasible feasible = [threshold, holes](const std::vector<int>& m) {
      if (static_cast<int>(m.size()) < threshold) return false;
      unsigned key = 0;
      for (int k : m) key = key * 31 + k + 1;
      return (key ^ holes[m.size() % holes.size()]) % 5 != 0;
    };
    for (int S : {0, 1, 7, 31}) {
      ErrorGuard guard;
      Walk w;
      ASSERT_NO_THROW(w = run(n, S, f, feasible)) << "n " << n << " S " << S;
      ASSERT_NE(w.end, "running");
      const int limit = Trl_HbbWalker::limit_for(S);
      int best = n, count = 0, most = 0;
      for (const Visit& v : w.visits) {
        const int k = static_cast<int>(v.members.size());
        for (int p = 0; p < f; ++p) EXPECT_EQ(v.members.at(p), p);  // fixed ones stay
        if (!v.halving) ++count;
        if (v.feasible && k < best) {
          best = k;
          count = 0;
        }
        most = std::max(most, count);
      }
      if (S == 0) {
        EXPECT_EQ(w.end, "exhausted");
      } else if (S == 31) {
        EXPECT_TRUE(w.visits.empty());
      } else if (w.end == "stagnation") {
        ++ends_by_stagnation[S];
        EXPECT_EQ(count, limit + 1) << "n " << n << " S " << S;
        EXPECT_EQ(w.stagnation, limit + 1);
      } else {
        EXPECT_LE(most, limit) << "n " << n << " S " << S;
      }
      // A count never exceeds the limit before the end.
      if (S == 1 || S == 7) {
        EXPECT_LE(most, limit + 1);
      }
    }
  }
  // The tables are long enough for both ends to occur with the limits 1 and 64.
  EXPECT_GT(ends_by_stagnation[1], 0);
  EXPECT_GT(ends_by_stagnation[7], 0);
  EXPECT_LT(ends_by_stagnation[7], 40);
}
