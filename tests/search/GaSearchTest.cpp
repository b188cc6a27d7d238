// The genome's objective and the driver of the genetic search on small random plans. The
// objective is checked against a fresh assignment solved here on the decoded set; the driver
// through the hooks of the simple search (best assignment, status line, stop poll), which
// count what it does.
#include <gtest/gtest.h>

#include <ga/garandom.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"
#include "propagation/Trl_Motorola.h"
#include "search/MyAlleleGenome.h"
#include "search/MyAlleleSetArray.h"
#include "search/MyPopulation.h"
#include "search/Trl_Assigner.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "search/Trl_GaSearch.h"
#include "search/Trl_SimpleSearch.h"
#include "search/Trl_TxMap.h"

namespace {

// n base stations (the first `fixed` of them fixed) and m users over 3 km by 3 km.
struct Plan {
  tk::list<Trl_Tx> tx;
  tk::list<Trl_Rx> rx;
  Trl_Assigner assigner;
  Plan(unsigned seed, int n, int m, int fixed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> at(0, 3000);
    for (int t = 0; t < n; ++t)
      tx.append(Trl_Tx(tk::d3_point(at(random), at(random), 30), tk::string("BS%04d", t), t, 20, 2, 1,
                       std::pow(10.0, 0.9), std::pow(10.0, 0.5), 0.4, t < fixed ? 3 : 0));
    for (int r = 0; r < m; ++r)
      rx.append(Trl_Rx(tk::d3_point(at(random), at(random), 1.5), r, std::pow(10.0, 1.0), std::pow(10.0, 0.55),
                       std::pow(10.0, 0.9), std::pow(10.0, -0.9), 1e-8, std::pow(10.0, -0.3), 0.66, 12.2,
                       12.2, 0));
    Trl_Motorola model(32.2, 35.1);
    assigner.prepare(tx, rx, Trl_Assigner::parameters(), model);
  }
};

// What a fresh assignment on the given positions scores: count plus objective, or n + 1.
float independent_score(Plan& plan, const std::vector<int>& positions) {
  if (positions.empty()) return plan.tx.size() + 1.0f;
  Trl_Assignment a(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  tk::list<int> on;
  for (int k : positions) on.append(k);
  a.select(on);
  if (!a.solve(true)) return plan.tx.size() + 1.0f;
  return static_cast<float>(positions.size() + a.objective());
}

std::vector<int> decoded(const MyAlleleGenome& g) {
  int count = 0;
  const tk::array<int> selected = g.decode(count);
  std::vector<int> positions;
  for (int i = 0; i < selected.size(); ++i)
    if (selected[i]) positions.push_back(i);
  EXPECT_EQ(count, static_cast<int>(positions.size()));
  return positions;
}

// The hooks of a search, counting polls and keeping the status lines.
struct Frame {
  Trl_Assignment* best;
  Trl_SimpleSearch hooks;
  int polls = 0;
  int stop_at = -1;
  std::vector<std::string> status;
  explicit Frame(Trl_Assignment& full) : best(&full), hooks(&best, 7, true) {
    hooks.stop_requested = [this] { return ++polls == stop_at; };
    hooks.show_status = [this](const tk::string& s) { status.push_back(s.cstring()); };
  }
};

}  // namespace

TEST(GaGenome, ObjectiveIsWhatTheSolverGivesForTheDecodedSet) {
  Plan plan(4, 14, 80, 2);
  Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  Trl_GaContext::Scope scope(candidate, true);
  GAResetRNG(21);
  Trl_TxMap map(plan.tx, nullptr);
  map.build(false);
  MyPopulation population(map.cells, map.tx_cells(), 40, nullptr, nullptr, nullptr);
  int feasible = 0;
  for (int i = 0; i < population.size(); ++i) {
    MyAlleleGenome& g = static_cast<MyAlleleGenome&>(population.individual(i));
    // Densities from sparse to full, so that both outcomes come up.
    g.fill(2 + i * 12 / population.size());
    const std::vector<int> on = decoded(g);
    EXPECT_FLOAT_EQ(MyAlleleGenome::Objective(g), independent_score(plan, on));
    EXPECT_EQ(g.active, static_cast<int>(on.size()));
    feasible += g.feasible;
    EXPECT_TRUE(on.size() >= 2 && on[0] == 0 && on[1] == 1) << "the fixed ones are always on";
  }
  EXPECT_GT(feasible, 0);
  EXPECT_LT(feasible, population.size());
}

TEST(GaGenome, NothingOnIsNeverSolvedAndFillCountsTheFixedOnes) {
  Plan plan(5, 8, 30, 1);
  Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  Trl_GaContext::Scope scope(candidate, true);
  GAResetRNG(2);
  Trl_TxMap map(plan.tx, nullptr);
  map.build(false);
  MyPopulation population(map.cells, map.tx_cells(), 1, nullptr, nullptr, nullptr);
  MyAlleleGenome& g = static_cast<MyAlleleGenome&>(population.individual(0));
  const int width = g.width(), height = g.height();
  g.fill(0);  // below the fixed count: just the fixed one
  EXPECT_EQ(decoded(g), std::vector<int>{0});
  EXPECT_EQ(g.count_on(0, width, 0, height), 0) << "fixed ones are not counted as on";
  g.fill(100);  // more than there are: every one on, and the fill ends
  EXPECT_EQ(decoded(g).size(), 8u);
  // A map of only free, switched-off stations: score n + 1 and the candidate untouched.
  Plan free_plan(5, 8, 30, 0);
  Trl_Assignment free_candidate(free_plan.assigner, Trl_Assignment::power_sum, free_plan.tx);
  Trl_GaContext::Scope free_scope(free_candidate, true);
  Trl_TxMap free_map(free_plan.tx, nullptr);
  free_map.build(false);
  MyPopulation free_population(free_map.cells, free_map.tx_cells(), 1, nullptr, nullptr, nullptr);
  MyAlleleGenome& off = static_cast<MyAlleleGenome&>(free_population.individual(0));
  free_candidate.used = -7;
  EXPECT_EQ(MyAlleleGenome::Objective(off), 9.0f);
  EXPECT_EQ(free_candidate.used, -7);
  EXPECT_FALSE(off.feasible);
}

TEST(GaSearch, OneGenerationIsOneStepForEachAlgorithmKind) {
  Plan plan(7, 12, 60, 0);
  for (int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(kind);
    Trl_Assignment full(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    full.select_all();
    ASSERT_TRUE(full.solve(true));
    Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    Frame frame(full);
    Trl_GaSearch search;
    search.algorithm = kind;
    search.generations = 1;
    search.population_size = 12;
    search.mutation_probability = 1 / (1.5f * 12);
    Trl_GaSearch::fix_seed(1);
    EXPECT_EQ(search.run(frame.hooks, candidate, plan.tx, 0), 2);
    EXPECT_EQ(frame.polls, 1);
    ASSERT_LE(frame.status.size(), 1u);
    if (!frame.status.empty()) {
      EXPECT_EQ(frame.status[0], Trl_GaSearch::best_status(0, full.used, full.uplink_sum, 1).cstring());
    }
    // The best is a solved set: solving it afresh gives the same powers.
    std::vector<int> on;
    for (int k = 0; k < full.tx_count; ++k)
      if (full.selected[k]) on.push_back(k);
    EXPECT_EQ(static_cast<int>(on.size()), full.used);
    EXPECT_NEAR(independent_score(plan, on), full.used + full.objective(), 1e-5);
    EXPECT_EQ(Trl_GaContext::current().assignment, nullptr) << "the run clears the module state";
  }
}

TEST(GaSearch, GenomesLargerThanTheBestAreNotOfferedAndAStopEndsTheRun) {
  Plan plan(8, 12, 60, 0);
  Trl_Assignment best(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  best.select_all();
  ASSERT_TRUE(best.solve(true));
  best.used = 0;  // no genome can be as small: none is solved, no status comes up
  Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  Frame frame(best);
  frame.stop_at = 4;
  Trl_GaSearch search;
  search.population_size = 10;
  testing::internal::CaptureStdout();
  EXPECT_EQ(search.run(frame.hooks, candidate, plan.tx, 3), 4);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(frame.polls, 4);
  EXPECT_TRUE(frame.status.empty());
  EXPECT_EQ(best.used, 0);
}

TEST(GaSearch, ARunFromOneStateOfTheGeneratorRepeats) {
  Plan plan(9, 12, 60, 1);
  std::vector<std::string> first;
  for (int run = 0; run < 2; ++run) {
    Trl_Assignment best(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    best.select_all();
    ASSERT_TRUE(best.solve(true));
    Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
    Frame frame(best);
    Trl_GaSearch search;
    search.generations = 6;
    search.population_size = 10;
    Trl_GaSearch::fix_seed(1);
    GAResetRNG(33);
    EXPECT_EQ(search.run(frame.hooks, candidate, plan.tx, 2), 2);
    ASSERT_EQ(frame.status.size(), 6u);
    EXPECT_NE(frame.status.back().find("(2) Best assignment: "), std::string::npos);
    if (run == 0) first = frame.status;
    else EXPECT_EQ(frame.status, first);
  }
}
