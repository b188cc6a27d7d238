// The working order of the base stations before a run and their marks after it. The spatial
// order of 17 stations is worked out by hand in the comment of its test.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/Trl_Planner.h"
#include "network/Trl_Tx.h"
#include "raster/Trl_Terrain.h"
#include "search/Trl_Assignment.h"

namespace {

Trl_Tx station(const std::string& label, double x, double y, int status = Trl_Tx::usable) {
  return Trl_Tx(tk::d3_point(x, y, 30), tk::string(label.c_str()), -1, 20, 2, 1, 1, 1, 0.4,
                status);
}

std::vector<std::string> labels(const tk::list<Trl_Tx>& list) {
  std::vector<std::string> out;
  for (const Trl_Tx& tx : list) out.push_back(tx.label.cstring());
  return out;
}

// The statuses or the numbers of a list, in list order.
std::vector<int> each(const tk::list<Trl_Tx>& list, int Trl_Tx::*field) {
  std::vector<int> out;
  for (const Trl_Tx& tx : list) out.push_back(tx.*field);
  return out;
}
std::vector<int> statuses(const tk::list<Trl_Tx>& list) { return each(list, &Trl_Tx::status); }
std::vector<int> numbers(const tk::list<Trl_Tx>& list) { return each(list, &Trl_Tx::number); }

// Numbers first, first + step, ... in list order.
void number(tk::list<Trl_Tx>& list, int first = 0, int step = 1) {
  for (Trl_Tx& tx : list) {
    tx.number = first;
    first += step;
  }
}

// 0, 1, ..., n - 1.
std::vector<int> positions(int n) {
  std::vector<int> out;
  for (int i = 0; i < n; ++i) out.push_back(i);
  return out;
}

// A terrain of 0 to 1000 m both ways (cell centres 10 m apart, so 5 m of half cell beyond),
// held by the planner for the test's life only.
struct TerrainPlanner {
  Trl_Planner planner;
  Trl_Terrain* terrain;
  TerrainPlanner() : terrain(new Trl_Terrain) {
    terrain->grid = Trl_Grid::from_spacing(0, 0, 10, 10, 101, 101, 1);
    planner.terrain = terrain;
  }
  ~TerrainPlanner() {
    planner.terrain = nullptr;
    terrain->release();
  }
};

// 17 stations numbered by x: station i at x = 10 i + 5, y = 10 (7 i mod 17) + 5.
std::string name(int i) { return "S" + std::to_string(i); }
void add_seventeen(tk::list<Trl_Tx>& list, int count) {
  for (int i = count - 1; i >= 0; --i)  // given in reverse, so that sorting matters
    list.append(station(name(i), 10 * i + 5, 10 * ((7 * i) % 17) + 5));
}

}  // namespace

TEST(WorkingOrder, FixedFirstInReverseListOrderFreeAfterExcludedLeftOut) {
  Trl_Planner p;
  const int status[] = {0, 3, 1, 4, 3, 2, 0};
  for (int i = 0; i < 7; ++i) p.tx_list.append(station(name(i), 100 * i, 50, status[i]));
  number(p.tx_list, 10);  // numbers stay without a terrain
  tk::list<Trl_Tx> working;
  working.append(station("stale", 0, 0));
  EXPECT_EQ(p.working_list(working), 2);
  EXPECT_EQ(labels(working), (std::vector<std::string>{"S4", "S1", "S0", "S2", "S5", "S6"}));
  EXPECT_EQ(numbers(working), (std::vector<int>{14, 11, 10, 12, 15, 16}));
  // The marks of the last run fall back to 0 on the planner's list; 3 and 4 stay.
  EXPECT_EQ(statuses(p.tx_list), (std::vector<int>{0, 3, 0, 4, 3, 0, 0}));
  EXPECT_EQ(numbers(p.tx_list), (std::vector<int>{10, 11, 12, 13, 14, 15, 16}));
}

TEST(WorkingOrder, WithoutTerrainNothingMovesEvenForManyStations) {
  Trl_Planner p;
  std::vector<std::string> given;
  for (int i = 0; i < 1000; ++i) {
    p.tx_list.append(station(name(i), (i * 7919) % 1000, (i * 104729) % 1000));
    given.push_back(name(i));
  }
  number(p.tx_list);
  tk::list<Trl_Tx> working;
  EXPECT_EQ(p.working_list(working), 0);
  EXPECT_EQ(labels(working), given);
  EXPECT_EQ(numbers(working), positions(1000));
}

// Sorted by x the stations are S0 to S16; A = S0..S7, B = S8..S16.
// A by y (7i mod 17 = 0,7,14,4,11,1,8,15): S0 S5 S3 S1 | S6 S4 S2 S7; each half by x:
//   S0 S1 | S3 S5 and S2 S4 | S6 S7, pairs stand.
// B by y (5,12,2,9,16,6,13,3,10): S10 S15 S8 S13 | S11 S16 S9 S14 S12;
//   first half by x: S8 S10 | S13 S15; second by x: S9 S11 | S12 S14 S16, the three by y:
//   S16 | S14 S12.
TEST(WorkingOrder, SeventeenOnTheTerrainTakeTheSpatialOrderSixteenKeepTheirs) {
  {
    TerrainPlanner tp;
    add_seventeen(tp.planner.tx_list, 17);
    tk::list<Trl_Tx> working;
    EXPECT_EQ(tp.planner.working_list(working), 0);
    const std::vector<std::string> expected{"S0", "S1", "S3", "S5", "S2", "S4", "S6", "S7", "S8",
                                            "S10", "S13", "S15", "S9", "S11", "S16", "S14", "S12"};
    EXPECT_EQ(labels(tp.planner.tx_list), expected);
    EXPECT_EQ(labels(working), expected);
    EXPECT_EQ(numbers(tp.planner.tx_list), positions(17));
    // A second run on the ordered list keeps the order.
    tp.planner.working_list(working);
    EXPECT_EQ(labels(tp.planner.tx_list), expected);
  }
  {
    TerrainPlanner tp;
    add_seventeen(tp.planner.tx_list, 16);
    tk::list<Trl_Tx> working;
    tp.planner.working_list(working);
    std::vector<std::string> given;
    for (int i = 15; i >= 0; --i) given.push_back(name(i));
    EXPECT_EQ(labels(tp.planner.tx_list), given);
    EXPECT_EQ(numbers(tp.planner.tx_list)[0], 0);
    EXPECT_EQ(numbers(tp.planner.tx_list)[15], 15);
  }
}

// Off the terrain: status 4, to the end in their order, left out of the working list; they
// do not count towards the 17.
TEST(WorkingOrder, StationsOffTheTerrainAreExcludedAndGoToTheEnd) {
  TerrainPlanner tp;
  tk::list<Trl_Tx>& list = tp.planner.tx_list;
  list.append(station("out1", -6, 500, Trl_Tx::fixed));  // just beyond the half cell
  list.append(station("in1", 300, 300, Trl_Tx::fixed));
  list.append(station("edge", -5, 1005));                // exactly on the outer half cell
  list.append(station("out2", 500, 1006, Trl_Tx::used));
  list.append(station("in2", 100, 900, Trl_Tx::unused));
  add_seventeen(list, 15);  // 18 on the terrain with these: a spatial order happens
  tk::list<Trl_Tx> working;
  EXPECT_EQ(tp.planner.working_list(working), 1);
  const std::vector<std::string> all = labels(list);
  ASSERT_EQ(all.size(), 20u);
  EXPECT_EQ(all[18], "out1");
  EXPECT_EQ(all[19], "out2");
  EXPECT_EQ(statuses(list)[18], Trl_Tx::excluded);
  EXPECT_EQ(statuses(list)[19], Trl_Tx::excluded);
  EXPECT_EQ(working.size(), 18);
  EXPECT_EQ(working.head().label, tk::string("in1"));
  for (const Trl_Tx& tx : working) EXPECT_NE(tx.status, Trl_Tx::excluded);
  EXPECT_EQ(numbers(list), positions(20));

  // Four in the plane: nothing sorted, the one off the terrain still goes to the end.
  TerrainPlanner few;
  few.planner.tx_list.append(station("a", 900, 900));
  few.planner.tx_list.append(station("off", 2000, 10));
  few.planner.tx_list.append(station("b", 100, 100));
  few.planner.tx_list.append(station("c", 500, 50));
  few.planner.working_list(working);
  EXPECT_EQ(labels(few.planner.tx_list), (std::vector<std::string>{"a", "b", "c", "off"}));
  EXPECT_EQ(labels(working), (std::vector<std::string>{"a", "b", "c"}));
  EXPECT_EQ(numbers(few.planner.tx_list), (std::vector<int>{0, 1, 2, 3}));
}

// mark_used: 0 becomes 2, then the base station at list position j becomes 1 when a selected
// position carries number j, unless it is fixed. Statuses 3 and 4 stay.
TEST(WorkingOrder, MarkUsedFromTheCurrentAssignment) {
  Trl_Planner p;
  const int status[] = {0, 3, 0, 3, 0, 4};
  for (int i = 0; i < 6; ++i) p.tx_list.append(station(name(i), 100 * i, 0, status[i]));
  number(p.tx_list);
  p.mark_used();  // no assignment: nothing happens
  EXPECT_EQ(statuses(p.tx_list), (std::vector<int>{0, 3, 0, 3, 0, 4}));

  tk::list<Trl_Tx> working;
  ASSERT_EQ(p.working_list(working), 2);  // S3 S1 S0 S2 S4
  p.assignment = new Trl_Assignment(p.assigner, 0, working);
  const int on[] = {1, 0, 0, 1, 0};  // S3 (fixed) and S2
  for (int i = 0; i < 5; ++i) p.assignment->selected[i] = on[i];
  p.mark_used();
  EXPECT_EQ(statuses(p.tx_list), (std::vector<int>{2, 3, 1, 3, 2, 4}));
}

// A list shorter than the array: the marking stops with the list.
TEST(WorkingOrder, MarkUsedStopsWithAShortList) {
  Trl_Planner p;
  tk::list<Trl_Tx> five;
  for (int i = 0; i < 5; ++i) five.append(station(name(i), 0, 0));
  number(five);
  p.assignment = new Trl_Assignment(p.assigner, 0, five);
  for (int i = 0; i < 5; ++i) p.assignment->selected[i] = i % 2 == 0;  // numbers 0, 2, 4
  p.tx_list.append(station("A", 0, 0));
  p.tx_list.append(station("B", 0, 0, Trl_Tx::unused));
  p.tx_list.append(station("C", 0, 0, Trl_Tx::used));
  p.mark_used();
  EXPECT_EQ(statuses(p.tx_list), (std::vector<int>{1, 2, 1}));
}

// mark_set names base stations by number, and a fixed one named there becomes 1.
TEST(WorkingOrder, MarkSetByNumberFixedOnesIncluded) {
  Trl_Planner p;
  const int status[] = {0, 3, 0, 3, 4, 1};
  for (int i = 0; i < 6; ++i) p.tx_list.append(station(name(i), 0, 0, status[i]));
  number(p.tx_list, 5, -1);  // numbers 5 4 3 2 1 0
  tk::list<int> set;
  set.append(2);  // S3, fixed
  set.append(3);  // S2
  set.append(9);  // nobody
  p.mark_set(set);
  EXPECT_EQ(statuses(p.tx_list), (std::vector<int>{2, 3, 1, 1, 4, 1}));
}
