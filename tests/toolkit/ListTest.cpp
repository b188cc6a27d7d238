#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/ErrorGuard.h"
#include "toolkit/list.h"

namespace {

std::vector<int> values(const tk::list<int>& l) {
  std::vector<int> v;
  for (int x : l) v.push_back(x);
  return v;
}

int three_way(const int& a, const int& b) { return a < b ? -1 : (a > b ? 1 : 0); }

TEST(List, HandlesWalkBothWaysAndSurviveOtherDeletions) {
  tk::list<int> l;
  tk::list_item a = l.append(1);
  tk::list_item b = l.append(2);
  tk::list_item c = l.push(0);
  EXPECT_EQ(values(l), (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(l.first(), c);
  EXPECT_EQ(l.last(), b);
  EXPECT_EQ(l.succ(c), a);
  EXPECT_EQ(l.pred(a), c);
  EXPECT_EQ(l.succ(b), nullptr);
  EXPECT_EQ(l.pred(c), nullptr);
  EXPECT_EQ(l.del_item(c), 0);
  EXPECT_EQ(l[a], 1);  // a's handle is unaffected by deleting another item
  l.insert(5, a, 0);
  l.insert(4, a, 1);
  EXPECT_EQ(values(l), (std::vector<int>{4, 1, 5, 2}));
  l.move_to_front(b);
  l.move_to_back(a);
  EXPECT_EQ(values(l), (std::vector<int>{2, 4, 5, 1}));
  EXPECT_EQ(l[l.get_item(2)], 5);
  EXPECT_EQ(l.rank(5), 3);
  EXPECT_EQ(l.rank(9), 0);
}

TEST(List, IterationMayDeleteTheCurrentItem) {
  tk::list<int> l;
  for (int i = 0; i < 10; ++i) l.append(i);
  int visited = 0;
  TK_FORALL_ITEMS(it, l) {
    ++visited;
    if (l[it] % 2 == 0) l.del_item(it);
  }
  EXPECT_EQ(visited, 10);
  EXPECT_EQ(values(l), (std::vector<int>{1, 3, 5, 7, 9}));
}

TEST(List, ConcMovesEverythingAndSizeFollows) {
  tk::list<int> a, b;
  a.append(1);
  a.append(2);
  b.append(3);
  b.append(4);
  b.append(5);
  a.conc(b, 0);
  EXPECT_EQ(a.size(), 5);
  EXPECT_EQ(b.size(), 0);
  EXPECT_TRUE(b.empty());
  tk::list<int> c;
  c.append(0);
  a.conc(c, 1);
  EXPECT_EQ(values(a), (std::vector<int>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(a.size(), 6);
}

TEST(List, SortIsStableThreeWayAndRemoveDropsAllEqual) {
  tk::list<int> l;
  for (int x : {3, 1, 2, 1, 3}) l.append(x);
  l.sort(three_way);
  EXPECT_EQ(values(l), (std::vector<int>{1, 1, 2, 3, 3}));
  l.remove(1);
  EXPECT_EQ(values(l), (std::vector<int>{2, 3, 3}));
  EXPECT_EQ(l.pop(), 2);
  EXPECT_EQ(l.pop_back(), 3);
  EXPECT_EQ(l.head(), 3);
  EXPECT_EQ(l.tail(), 3);
}

std::vector<std::string> destroyed;
struct Tracked {
  std::string name;
  bool live = false;
  explicit Tracked(std::string n) : name(std::move(n)) {}
  Tracked(const Tracked& o) : name(o.name), live(true) {}
  ~Tracked() {
    if (live) destroyed.push_back(name);
  }
};

TEST(List, ClearDestroysItemsInListOrder) {
  destroyed.clear();
  {
    tk::list<Tracked> l;
    l.append(Tracked("b"));
    l.push(Tracked("a"));
    l.append(Tracked("c"));
    destroyed.clear();
    l.clear();
    EXPECT_EQ(destroyed, (std::vector<std::string>{"a", "b", "c"}));
  }
}

TEST(List, CopiesAreIndependent) {
  tk::list<int> a;
  a.append(1);
  tk::list<int> b = a;
  b.append(2);
  EXPECT_EQ(a.size(), 1);
  EXPECT_EQ(b.size(), 2);
}

TEST(List, ViolationsReportTheirExactTexts) {
  tk::list<int> l;
  EXPECT_TK_ERROR(l.pop(), 1, "dlist::pop on empty list.");
  EXPECT_TK_ERROR(l.pop_back(), 1, "dlist::pop_back on empty list.");
  EXPECT_TK_ERROR(l.head(), 1, "dlist::head(): empty list");
  EXPECT_TK_ERROR(l.tail(), 1, "dlist::tail(): empty list");
  EXPECT_TK_ERROR(l.get_item(0), 1, "dlist::get_item: index out of range");
  EXPECT_TK_ERROR(l.del_item(nullptr), 999, "dlist: delete nil-item");
  EXPECT_TK_ERROR(l.move_to_front(nullptr), 1, "dlist::move_to_front: nil argument");
  EXPECT_TK_ERROR(l.move_to_back(nullptr), 1, "dlist::move_to_back: nil argument");
  tk::list_item it = l.append(1);
  EXPECT_TK_ERROR(l.insert(2, it, 2), 1, "dlist::insert: illegal dir argument.");
  EXPECT_TK_ERROR(l.get_item(1), 1, "dlist::get_item: index out of range");
  EXPECT_TK_ERROR(l.get_item(-1), 1, "dlist::get_item: index out of range");
}

}  // namespace
