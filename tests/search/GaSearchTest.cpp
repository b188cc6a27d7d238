// The genome's objective and the driver of the genetic search on small random plans. The
// objective is checked against a fresh assignment solved here on the decoded set; the driver
// through the hooks of the simple search (best assignment, status line, stop poll), which
// count what it does.
#include <gtest/gtest.h>

#include <ga/garandom.h>

#include <memory>
#include <string>
#include <vector>

#include "search/MyAlleleGenome.h"
#include "search/MyAlleleSetArray.h"
#include "search/MyPopulation.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "search/Trl_GaSearch.h"
#include "search/Trl_SimpleSearch.h"
#include "search/Trl_TxMap.h"
#include "support/RandomPlan.h"

namespace {

using Plan = RandomPlan;

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

// A population of the given size on the plan's compacted map, scoring through `candidate`.
struct Population {
  Trl_GaContext::Scope scope;
  Trl_TxMap map;
  std::unique_ptr<MyPopulation> population;
  Population(Plan& plan, Trl_Assignment& candidate, int size) : scope(candidate, true), map(plan.tx, nullptr) {
    map.build(false);
    population.reset(new MyPopulation(map.cells, map.tx_cells(), size, nullptr, nullptr, nullptr));
  }
  MyAlleleGenome& operator[](int i) { return static_cast<MyAlleleGenome&>(population->individual(i)); }
};

// The full set solved as the best so far, a candidate, and the hooks of a search on them
// (best assignment, status line, stop poll), counting polls and keeping the status lines.
struct Frame {
  Trl_Assignment full, candidate;
  bool solved;
  Trl_Assignment* best;
  Trl_SimpleSearch hooks;
  int polls = 0;
  int stop_at = -1;
  std::vector<std::string> status;
  explicit Frame(Plan& plan)
      : full(plan.assigner, Trl_Assignment::power_sum, plan.tx),
        candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx),
        solved((full.select_all(), full.solve(true))),
        best(&full),
        hooks(&best, 7, true) {
    hooks.stop_requested = [this] { return ++polls == stop_at; };
    hooks.show_status = [this](const tk::string& s) { status.push_back(s.cstring()); };
  }
};

}  // namespace

TEST(GaGenome, ObjectiveIsWhatTheSolverGivesForTheDecodedSet) {
  Plan plan(4, 14, 80, 2);
  Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  GAResetRNG(21);
  Population population(plan, candidate, 40);
  int feasible = 0;
  const int size = population.population->size();
  for (int i = 0; i < size; ++i) {
    MyAlleleGenome& g = population[i];
    // Densities from sparse to full, so that both outcomes come up.
    g.fill(2 + i * 12 / size);
    const std::vector<int> on = decoded(g);
    EXPECT_FLOAT_EQ(MyAlleleGenome::Objective(g), independent_score(plan, on));
    EXPECT_EQ(g.active, static_cast<int>(on.size()));
    feasible += g.feasible;
    EXPECT_TRUE(on.size() >= 2 && on[0] == 0 && on[1] == 1) << "the fixed ones are always on";
  }
  EXPECT_GT(feasible, 0);
  EXPECT_LT(feasible, size);
}

TEST(GaGenome, NothingOnIsNeverSolvedAndFillCountsTheFixedOnes) {
  Plan plan(5, 8, 30, 1);
  Trl_Assignment candidate(plan.assigner, Trl_Assignment::power_sum, plan.tx);
  GAResetRNG(2);
  Population population(plan, candidate, 1);
  MyAlleleGenome& g = population[0];
  const int width = g.width(), height = g.height();
  g.fill(0);  // below the fixed count: just the fixed one
  EXPECT_EQ(decoded(g), std::vector<int>{0});
  EXPECT_EQ(g.count_on(0, width, 0, height), 0) << "fixed ones are not counted as on";
  g.fill(100);  // more than there are: every one on, and the fill ends
  EXPECT_EQ(decoded(g).size(), 8u);
  // A map of only free, switched-off stations: score n + 1 and the candidate untouched.
  Plan free_plan(5, 8, 30, 0);
  Trl_Assignment free_candidate(free_plan.assigner, Trl_Assignment::power_sum, free_plan.tx);
  Population free_population(free_plan, free_candidate, 1);
  MyAlleleGenome& off = free_population[0];
  free_candidate.used = -7;
  EXPECT_EQ(MyAlleleGenome::Objective(off), 9.0f);
  EXPECT_EQ(free_candidate.used, -7);
  EXPECT_FALSE(off.feasible);
}

TEST(GaSearch, OneGenerationIsOneStepForEachAlgorithmKind) {
  Plan plan(7, 12, 60, 0);
  for (int kind = 0; kind < 3; ++kind) {
    SCOPED_TRACE(kind);
    Frame frame(plan);
    ASSERT_TRUE(frame.solved);
    Trl_Assignment& full = frame.full;
    Trl_GaSearch search;
    search.algorithm = kind;
    search.generations = 1;
    search.population_size = 12;
    search.mutation_probability = 1 / (1.5f * 12);
    Trl_GaSearch::fix_seed(1);
    EXPECT_EQ(search.run(frame.hooks, frame.candidate, plan.tx, 0), 2);
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
  Frame frame(plan);
  ASSERT_TRUE(frame.solved);
  frame.full.used = 0;  // no genome can be as small: none is solved, no status comes up
  frame.stop_at = 4;
  Trl_GaSearch search;
  search.population_size = 10;
  testing::internal::CaptureStdout();
  EXPECT_EQ(search.run(frame.hooks, frame.candidate, plan.tx, 3), 4);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(frame.polls, 4);
  EXPECT_TRUE(frame.status.empty());
  EXPECT_EQ(frame.full.used, 0);
}

TEST(GaSearch, ARunFromOneStateOfTheGeneratorRepeats) {
  Plan plan(9, 12, 60, 1);
  std::vector<std::string> first;
  for (int run = 0; run < 2; ++run) {
    Frame frame(plan);
    ASSERT_TRUE(frame.solved);
    Trl_GaSearch search;
    search.generations = 6;
    search.population_size = 10;
    Trl_GaSearch::fix_seed(1);
    GAResetRNG(33);
    EXPECT_EQ(search.run(frame.hooks, frame.candidate, plan.tx, 2), 2);
    ASSERT_EQ(frame.status.size(), 6u);
    EXPECT_NE(frame.status.back().find("(2) Best assignment: "), std::string::npos);
    if (run == 0) first = frame.status;
    else EXPECT_EQ(frame.status, first);
  }
}
