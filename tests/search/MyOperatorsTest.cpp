// The crossovers and mutators of the genetic search on a hand-made map with empty, fixed and
// free cells. Every operator, run many times on random parents, keeps empty cells at -1 and
// fixed ones at 2, and children take each gene from a parent. The rectangle crossovers are
// checked against the rectangle computed here from the same draws of GAlib's generator, reset
// to one seed before each.
#include <gtest/gtest.h>

#include <ga/garandom.h>

#include <vector>

#include "search/MyAlleleGenome.h"
#include "search/MyAlleleSetArray.h"
#include "search/MyOperators.h"
#include "search/Trl_GaContext.h"

namespace {

// 4 rows by 5 columns: 0 empty, above 0 free, below 0 fixed.
const int map_cells[4][5] = {{1, 0, 2, 3, 0}, {0, 4, -5, 0, 6}, {7, 8, 0, 9, 10}, {0, 11, 12, -13, 14}};
const int W = 5, H = 4;

// Installs the allele sets of the map for the life of the object.
struct HandMap {
  HandMap() {
    tk::array2<int> cells(H, W);
    for (int r = 0; r < H; ++r)
      for (int c = 0; c < W; ++c) cells(r, c) = map_cells[r][c];
    Trl_GaContext& context = Trl_GaContext::current();
    context.clear();
    context.allele_sets.reset(new MyAlleleSetArray(cells));
  }
  ~HandMap() { Trl_GaContext::current().clear(); }
  static int cell(int i) { return map_cells[i / W][i % W]; }
};

MyAlleleGenome random_genome(bool feasible) {
  MyAlleleGenome g(W, H, nullptr, nullptr, nullptr);
  MyAlleleGenome::UniformInitializer(g);
  g.feasible = feasible;
  g.active = g.count_on(0, W, 0, H);
  return g;
}

std::vector<int> genes(const MyAlleleGenome& g) {
  std::vector<int> v;
  for (int y = 0; y < H; ++y)
    for (int x = 0; x < W; ++x) v.push_back(g.gene(x, y));
  return v;
}

void expect_cells_kept(const MyAlleleGenome& g) {
  const std::vector<int> v = genes(g);
  for (int i = 0; i < W * H; ++i) {
    const int c = HandMap::cell(i);
    if (c == 0) { EXPECT_EQ(v[i], -1) << "empty cell " << i; }
    else if (c < 0) EXPECT_EQ(v[i], 2) << "fixed cell " << i;
    else EXPECT_TRUE(v[i] == 0 || v[i] == 1) << "free cell " << i;
  }
}

int ones(const MyAlleleGenome& g) { return g.count_on(0, W, 0, H); }

// What a child must be: `inside` of the rectangle from one parent, the rest from the other.
void expect_child(const MyAlleleGenome& child, const MyAlleleGenome& outside_parent,
                  const MyAlleleGenome& inside_parent, const std::vector<bool>& inside) {
  const std::vector<int> c = genes(child), o = genes(outside_parent), n = genes(inside_parent);
  for (int i = 0; i < W * H; ++i) EXPECT_EQ(c[i], inside[i] ? n[i] : o[i]) << "gene " << i;
}

std::vector<bool> rectangle(int x0, int x1, int y0, int y1) {  // inclusive
  std::vector<bool> in(W * H);
  for (int y = y0; y <= y1; ++y)
    for (int x = x0; x <= x1; ++x) in[y * W + x] = true;
  return in;
}

int draw(int m) { return static_cast<int>(GARandomFloat() * (m + 1)); }

}  // namespace

TEST(MyOperators, EveryCrossoverKeepsEmptyAndFixedCellsAndTakesGenesFromTheParents) {
  HandMap map;
  GAResetRNG(11);
  for (int number = 0; number < 6; ++number)
    for (int round = 0; round < 150; ++round) {
      SCOPED_TRACE(MyOperators::crossover_names[number]);
      const MyAlleleGenome mother = random_genome(round % 3 != 0), father = random_genome(round % 2 == 0);
      MyAlleleGenome sister(W, H), brother(W, H), single(W, H);
      EXPECT_EQ(MyOperators::crossover(number)(mother, father, &sister, &brother), 2);
      // GAlib's operators, and the fallback to one of them, make a lone child as the sister.
      const bool as_brother = round % 2 && (number == 3 || number == 5);
      EXPECT_EQ(MyOperators::crossover(number)(mother, father, as_brother ? nullptr : &single,
                                               as_brother ? &single : nullptr), 1);
      EXPECT_EQ(MyOperators::crossover(number)(mother, father, nullptr, nullptr), 0);
      for (const MyAlleleGenome* child : {&sister, &brother, &single}) {
        expect_cells_kept(*child);
        EXPECT_FALSE(child->feasible);
        const std::vector<int> c = genes(*child), m = genes(mother), f = genes(father);
        for (int i = 0; i < W * H; ++i) EXPECT_TRUE(c[i] == m[i] || c[i] == f[i]);
      }
    }
}

// The plain rectangle runs from x0 to x0 + dx and y0 to y0 + dy; the cyclic one from each
// first draw to the second, round the edges when the second is smaller. The cyclic one also
// makes a lone child as the brother.
TEST(MyOperators, RectangleCrossoversExchangeTheDrawnRectangle) {
  HandMap map;
  int wrapped = 0;
  for (bool cyclic : {false, true})
    for (unsigned seed = 1; seed <= 30; ++seed) {
      SCOPED_TRACE(testing::Message() << (cyclic ? "cyclic" : "plain") << ", seed " << seed);
      const MyAlleleGenome mother = random_genome(true), father = random_genome(true);
      GAResetRNG(seed);
      std::vector<bool> in(W * H);
      if (!cyclic) {
        const int x0 = draw(W - 1), x1 = x0 + draw(W - 1 - x0), y0 = draw(H - 1), dy = draw(H - 1 - y0);
        in = rectangle(x0, x1, y0, y0 + dy);
      } else {
        const int x0 = draw(W - 1), x1 = draw(W - 1), y0 = draw(H - 1), y1 = draw(H - 1);
        for (int y = 0; y < H; ++y)
          for (int x = 0; x < W; ++x) {
            const bool in_x = x0 <= x1 ? x0 <= x && x <= x1 : x <= x1 || x >= x0;
            const bool in_y = y0 <= y1 ? y0 <= y && y <= y1 : y <= y1 || y >= y0;
            in[y * W + x] = in_x && in_y;
          }
        wrapped += x0 > x1 || y0 > y1;
      }
      const auto crossover = cyclic ? MyOperators::CyclicTwoPointsCrossover : MyOperators::TwoPointsCrossover;
      GAResetRNG(seed);
      MyAlleleGenome sister(W, H), brother(W, H), only(W, H);
      crossover(mother, father, &sister, &brother);
      expect_child(sister, mother, father, in);
      expect_child(brother, father, mother, in);
      if (!cyclic) continue;
      GAResetRNG(seed);
      crossover(mother, father, nullptr, &only);
      expect_child(only, mother, father, in);
    }
  EXPECT_GT(wrapped, 0);
}

TEST(MyOperators, BestQuadrantGivesTheSisterTheLeanerParentOfEachNinth) {
  HandMap map;
  GAResetRNG(5);
  // Bands of a 5 by 4 map: x 0, 1, 2-4 and y 0, 1, 2-3.
  const int xs[4] = {0, 1, 2, W}, ys[4] = {0, 1, 2, H};
  for (int round = 0; round < 50; ++round) {
    const MyAlleleGenome mother = random_genome(true), father = random_genome(true);
    MyAlleleGenome sister(W, H), brother(W, H);
    MyOperators::BestQuadrantCrossover(mother, father, &sister, &brother);
    std::vector<int> expected(W * H);
    for (int bx = 0; bx < 3; ++bx)
      for (int by = 0; by < 3; ++by) {
        const int a = mother.count_on(xs[bx], xs[bx + 1], ys[by], ys[by + 1]);
        const int b = father.count_on(xs[bx], xs[bx + 1], ys[by], ys[by + 1]);
        const std::vector<int> lean = genes(a > b ? father : mother);
        for (int y = ys[by]; y < ys[by + 1]; ++y)
          for (int x = xs[bx]; x < xs[bx + 1]; ++x) expected[y * W + x] = lean[y * W + x];
      }
    EXPECT_EQ(genes(sister), expected);
  }
}

TEST(MyOperators, MutatorsKeepCellsAndCountWhatTheyChange) {
  HandMap map;
  GAResetRNG(17);
  for (float p : {0.0f, 0.05f, 0.3f, 0.9f})
    for (int round = 0; round < 100; ++round) {
      for (int number = 0; number < 3; ++number) {
        SCOPED_TRACE(testing::Message() << MyOperators::mutator_names[number] << " p " << p);
        MyAlleleGenome g = random_genome(true);
        const MyAlleleGenome before = g;
        const int changes = MyOperators::mutator(number)(g, p);
        expect_cells_kept(g);
        const std::vector<int> a = genes(before), b = genes(g);
        int changed = 0, switched_on = 0;
        for (int i = 0; i < W * H; ++i) {
          changed += a[i] != b[i];
          switched_on += a[i] == 0 && b[i] == 1;
        }
        if (p == 0) { EXPECT_EQ(changes, 0); }
        if (changes > 0) { EXPECT_FALSE(g.feasible); }
        if (number == 0) { EXPECT_EQ(ones(g), ones(before)) << "a swap keeps the count"; }
        if (number == 1) { EXPECT_LE(changed, changes); }
        if (number == 2) {
          EXPECT_EQ(switched_on, 0) << "only ever switches off";
          EXPECT_EQ(changed, changes);
        }
      }
    }
}
