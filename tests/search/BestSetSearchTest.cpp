// The best-set search: the ranking and the greedy step against sets worked by hand, the
// bisection driven by a table of which prefix sizes pass, validation on fresh samples of the
// small city, and the whole command with its marks and its stop.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_Tx.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_BestSetSearch.h"
#include "support/ScenarioCity.h"
#include "support/ScriptedWindows.h"
#include "support/WindowedPlanner.h"

namespace {

tk::array<Trl_TxBitvector> sets(int n, const std::vector<std::vector<int>>& members) {
  tk::array<Trl_TxBitvector> results(static_cast<int>(members.size()));
  for (int i = 0; i < results.size(); ++i) {
    results[i].resize(n, true);
    for (int b : members[i]) results[i].set(b);
  }
  return results;
}

std::vector<int> items(const tk::list<int>& list) {
  std::vector<int> v;
  for (int k : list) v.push_back(k);
  return v;
}

// The small city with users drawn uniformly over its terrain for the samples, under the
// simple law, with which all six base stations serve any such sample.
void city_for_samples(Trl_Planner& p, int users) {
  load_scenario_city(p);
  p.propagation_model = 0;
  const Trl_Grid& g = p.terrain->height_grid();
  p.rx_region.xmin = g.x0;
  p.rx_region.xmax = g.x1;
  p.rx_region.ymin = g.y0;
  p.rx_region.ymax = g.y1;
  p.rx_region.count = users;
}

}  // namespace

TEST(BestSetSearch, RankingFollowsTheSetsThatWinTogether) {
  struct Case {
    int n;  // bits per set
    std::vector<std::vector<int>> results;
    int count;  // results read
    std::vector<int> priority;
    int average;
  };
  const Case cases[] = {
      // 2 leads (in all three), 1 and 3 tie with the set {2}: the higher wins; then only
      // {2, 3, 5} holds all taken, with nothing new, so sets missing one taken bit count
      // (1 from {1, 2, 3}), then missing two (0 from {0, 1, 2}); 4 was never won.
      {6, {{0, 1, 2}, {1, 2, 3}, {2, 3, 5}}, 3, {2, 3, 5, 1, 0}, 3},
      // One try: its set walked with ties to the highest bit; average its size.
      {6, {{1, 4}}, 1, {4, 1}, 2},
      // Only the first count results are read: the empty ones give nothing to rank.
      {6, {{}, {}, {0, 5}}, 2, {}, 0},
      // 7 of 9 bits, mean 7/2 rounded up; once {5, 6, 8} is taken, {0, 1, 2, 3} counts only
      // when three missing bits are allowed.
      {9, {{0, 1, 2, 3}, {5, 6, 8}}, 2, {8, 6, 5, 3, 2, 1, 0}, 4},
  };
  for (const Case& c : cases) {
    tk::list<int> priority;
    const tk::array<Trl_TxBitvector> results = sets(c.n, c.results);
    EXPECT_EQ(Trl_BestSetSearch::rank_base_stations(results, c.count, priority), c.average);
    EXPECT_EQ(items(priority), c.priority);
  }
  // No set at all holds anything: no winner, whatever is taken.
  tk::array<int> counts(6);
  Trl_TxBitvector taken(6, true);
  EXPECT_EQ(Trl_BestSetSearch::next_base_station(sets(6, {{}, {}}), 2, counts, taken), -1);
}

TEST(BestSetSearch, BisectionTriesThePrefixesTheRulesGive) {
  struct Case {
    int average;
    int pass_from;        // prefixes of at least this size pass; 0: none
    int stop_after;       // stop polls answered no before a yes; -1: never
    std::vector<int> tried;
    int best_size;
    const char* message;  // empty: none
  };
  const Case cases[] = {
      // The first prefix passes: the set shrinks, to nothing, and grows back to the last pass.
      {3, 3, -1, {3, 0, 2}, 3,
       "Validation yielded 90.00% with 3 base stations. The average number of base stations in the search was 3."},
      // The first fails: it grows, then halves the steps until a step of 1 after a pass.
      {3, 6, -1, {3, 6, 4, 5}, 6,
       "Validation yielded 90.00% with 6 base stations. The average number of base stations in the search was 3."},
      // Nothing passes: the ranking runs out.
      {3, 0, -1, {3, 6}, 0, "Validation did not match requirements."},
      // A stop before the second prefix: the first pass stays, no message.
      {3, 3, 1, {3}, 3, ""},
      // An average of 1 passing every sample: the count equals the ratio.
      {1, 1, -1, {1}, 1,
       "Validation yielded 100.00% with 1 base stations. The average number of base stations in the search was 1."},
  };
  for (const Case& c : cases) {
    tk::list<int> priority;
    for (int k = 0; k < 8; ++k) priority.append(10 + k);
    std::vector<int> tried;
    std::string said;
    int polls = 0;
    const double ratio = c.average == 1 ? 1.0 : 0.9;
    Trl_BestSetSearch::bisection_hooks hooks{
        [&](const tk::list<int>& set) {
          tried.push_back(set.size());
          return c.pass_from > 0 && set.size() >= c.pass_from ? ratio : 0.0;
        },
        [&] { return c.stop_after >= 0 && polls++ == c.stop_after; },
        [&](const tk::string& text) { said += text.str(); }};
    const tk::list<int> best = Trl_BestSetSearch::bisect(priority, c.average, hooks);
    EXPECT_EQ(tried, c.tried) << c.message;
    ASSERT_EQ(best.size(), c.best_size) << c.message;
    for (int k = 0; k < c.best_size; ++k) EXPECT_EQ(items(best)[k], 10 + k);  // a prefix of the ranking
    EXPECT_EQ(said, c.message);
  }
}

TEST(BestSetSearch, ValidationRunsTheSamplesTheRequirementAllows) {
  struct Case {
    std::vector<int> set;
    double requirement;
    double ratio;
    int samples;  // status lines
  };
  const Case cases[] = {
      {{0, 1, 2, 3, 4, 5}, 0.9, 1.0, 3},
      {{}, 0.0, 0.0, 3},  // requirement 0 runs all samples; a ratio of exactly 0 is a failure
      {{}, 0.9, 0.0, 1},  // a hopeless set ends at its first failure
  };
  for (const Case& c : cases) {
    ScriptedWindows scripted("");
    WindowedPlanner w;
    Trl_Planner& p = w.p;
    city_for_samples(p, 20);
    p.validation_tries = 3;
    p.validation_requirement = c.requirement;
    tk::list<int> set;
    for (int k : c.set) set.append(k);
    EXPECT_EQ(Trl_BestSetSearch::validate(p, set), c.ratio);
    const std::string t = scripted.transcript();
    EXPECT_EQ(occurrences(t, "all BS"), c.samples) << t;
    const char* first = c.ratio > 0 ? "status:  Assignment with all BS found (6,2,0).\n"
                                    : "status:  No assignment with all BS possible (0,2,1).\n";
    EXPECT_NE(t.find(first), std::string::npos) << t;
  }
}

TEST(BestSetSearch, TheCommandMarksTheSetItNamesAndDropsTheAssignment) {
  ScriptedWindows scripted("");
  WindowedPlanner w;
  Trl_Planner& p = w.p;
  city_for_samples(p, 30);
  p.search_tries = 3;
  p.validation_tries = 3;
  p.validation_requirement = 0.6;
  testing::internal::CaptureStdout();
  Trl_BestSetSearch::run(p);
  testing::internal::GetCapturedStdout();
  const std::string t = scripted.transcript();
  const size_t said = t.find("message: Validation yielded ");
  ASSERT_NE(said, std::string::npos) << t;
  const int named = std::stoi(t.substr(t.find("% with ", said) + 7));
  int in_set = 0;
  for (const Trl_Tx& tx : p.tx_list) {
    EXPECT_TRUE(tx.status == Trl_Tx::used || tx.status == Trl_Tx::unused) << tx.status;
    in_set += tx.status == Trl_Tx::used;
  }
  EXPECT_EQ(in_set, named);
  EXPECT_EQ(p.assignment, nullptr);
  EXPECT_EQ(occurrences(t, "status:  Assignment with all base stations found.\n"), 3) << t;
}

void best_set_command() { planner.best_set_search_command(); }

// The stop poll asks the program's one planner, as the menu command does.
TEST(BestSetSearch, AStopInTheFirstTryLeavesNoRankingNoMessageAndNoMarks) {
  ScriptedWindows scripted("stop after 1\nmenu Search\nyes\n");
  CommandOnBar bar("Search", best_set_command);
  Trl_Planner& p = planner;
  city_for_samples(p, 20);
  bar.run();
  const std::string t = scripted.transcript();
  EXPECT_EQ(occurrences(t, "confirm: Do you want to stop the search? -> yes\n"), 1) << t;
  EXPECT_EQ(occurrences(t, "message:"), 0) << t;
  for (const Trl_Tx& tx : p.tx_list) EXPECT_EQ(tx.status, Trl_Tx::usable);
  EXPECT_EQ(p.assignment, nullptr);
}
