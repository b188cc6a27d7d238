#include "search/MyOperators.h"

#include <ga/garandom.h>

#include <algorithm>
#include <vector>

#include "search/MyAlleleGenome.h"
#include "search/MyAlleleSetArray.h"

namespace {

typedef GA2DArrayGenome<_myalleletype> ArrayGenome;

MyAlleleGenome& as_mine(GAGenome& g) { return static_cast<MyAlleleGenome&>(g); }
const MyAlleleGenome& as_mine(const GAGenome& g) { return static_cast<const MyAlleleGenome&>(g); }

// A whole number from 0 to m.
int draw(int m) { return std::min(static_cast<int>(GARandomFloat() * (m + 1)), m); }

// All genes of `source`, none of its GAlib state.
void take_all(MyAlleleGenome& child, const MyAlleleGenome& source) {
  child.copy_block(source, 0, 0, 0, 0, source.width(), source.height());
}

// GAlib's operator on the genes; the children's evaluations are stale afterwards.
int wrapped(GAGenome::SexualCrossover cross, const GAGenome& mother, const GAGenome& father,
            GAGenome* sister, GAGenome* brother) {
  const int children = cross(mother, father, sister, brother);
  if (sister) as_mine(*sister).clear_state();
  if (brother) as_mine(*brother).clear_state();
  return children;
}

struct Block {
  int x0, x1, y0, y1;  // half-open
  void copy(MyAlleleGenome& to, const MyAlleleGenome& from) const {
    to.copy_block(from, x0, y0, x0, y0, x1 - x0, y1 - y0);
  }
};

// The three by three chequer: bands of width / 3 and height / 3, the last band of each
// direction taking the remainder. With `exact_third` a band is widened only when it ends
// exactly at the third, as the one-child crossover does.
template <class F>
void for_each_ninth(int w, int h, bool exact_third, F treat) {
  const int dx = w / 3, dy = h / 3;
  for (int x0 = 0, x1 = dx; x1 <= w; x0 += dx, x1 += dx)
    for (int y0 = 0, y1 = dy; y1 <= h; y0 += dy, y1 += dy) {
      if (exact_third ? x1 / dx == 3 : x1 / dx >= 3) x1 = w;
      if (exact_third ? y1 / dy == 3 : y1 / dy >= 3) y1 = h;
      treat(Block{x0, x1, y0, y1});
    }
}

// One or two ranges of 0 to size - 1 from a to b, wrapping round when a is beyond b.
std::vector<std::pair<int, int>> cyclic_ranges(int a, int b, int size) {
  if (a <= b) return {{a, b - a + 1}};
  return {{0, b + 1}, {a, size - a}};
}

void flip(MyAlleleGenome& g, int x, int y) { g.gene(x, y, g.gene(x, y) == tx_on ? tx_off : tx_on); }

void swap_genes(MyAlleleGenome& g, int x, int y, int x2, int y2) {
  const _myalleletype first = g.gene(x, y);
  g.gene(x, y, g.gene(x2, y2));
  g.gene(x2, y2, first);
}

// How many genes a mutation of probability p changes by direct picks; below 1 each free cell
// tosses a coin instead.
int picks(float p) { return static_cast<int>(static_cast<float>(MyAlleleGenome::allele_sets().tx_count * p)); }

}  // namespace

const char* const MyOperators::crossover_names[6] = {
    "UniformCrossover",      "OnePointCrossover",     "EvenOddCrossover",
    "TwoPointsCrossover",    "BestQuadrantCrossover", "CyclicTwoPointsCrossover"};
const char* const MyOperators::mutator_names[3] = {"SwapMutator", "FlipMutator", "VariableMutator"};

GAGenome::SexualCrossover MyOperators::crossover(int number) {
  static const GAGenome::SexualCrossover all[6] = {UniformCrossover,      OnePointCrossover,
                                                   EvenOddCrossover,      TwoPointsCrossover,
                                                   BestQuadrantCrossover, CyclicTwoPointsCrossover};
  return number >= 0 && number < 6 ? all[number] : nullptr;
}

GAGenome::Mutator MyOperators::mutator(int number) {
  static const GAGenome::Mutator all[3] = {SwapMutator, FlipMutator, VariableMutator};
  return number >= 0 && number < 3 ? all[number] : nullptr;
}

int MyOperators::UniformCrossover(const GAGenome& mother, const GAGenome& father,
                                  GAGenome* sister, GAGenome* brother) {
  return wrapped(ArrayGenome::UniformCrossover, mother, father, sister, brother);
}

int MyOperators::OnePointCrossover(const GAGenome& mother, const GAGenome& father,
                                   GAGenome* sister, GAGenome* brother) {
  return wrapped(ArrayGenome::OnePointCrossover, mother, father, sister, brother);
}

int MyOperators::EvenOddCrossover(const GAGenome& mother, const GAGenome& father,
                                  GAGenome* sister, GAGenome* brother) {
  return wrapped(ArrayGenome::EvenOddCrossover, mother, father, sister, brother);
}

int MyOperators::TwoPointsCrossover(const GAGenome& mother_genome, const GAGenome& father_genome,
                                    GAGenome* sister, GAGenome* brother) {
  const MyAlleleGenome& mother = as_mine(mother_genome);
  const MyAlleleGenome& father = as_mine(father_genome);
  const int w = mother.width(), h = mother.height();
  const int x0 = draw(w - 1);
  const int x1 = x0 + draw(w - 1 - x0);
  const int y0 = draw(h - 1);
  const int dy = draw(h - 1 - y0);
  const Block block{x0, x1 + 1, y0, y0 + dy + 1};
  if (sister && brother) {
    take_all(as_mine(*sister), mother);
    block.copy(as_mine(*sister), father);
    take_all(as_mine(*brother), father);
    block.copy(as_mine(*brother), mother);
    return 2;
  }
  GAGenome* child = sister ? sister : brother;
  if (!child) return 0;
  const bool mother_background = GARandomBit();
  take_all(as_mine(*child), mother_background ? mother : father);
  block.copy(as_mine(*child), mother_background ? father : mother);
  return 1;
}

int MyOperators::CyclicTwoPointsCrossover(const GAGenome& mother_genome,
                                          const GAGenome& father_genome, GAGenome* sister,
                                          GAGenome* brother) {
  const MyAlleleGenome& mother = as_mine(mother_genome);
  const MyAlleleGenome& father = as_mine(father_genome);
  const int w = mother.width(), h = mother.height();
  const int x0 = draw(w - 1), x1 = draw(w - 1), y0 = draw(h - 1), y1 = draw(h - 1);
  std::vector<Block> blocks;
  for (auto xs : cyclic_ranges(x0, x1, w))
    for (auto ys : cyclic_ranges(y0, y1, h))
      blocks.push_back(Block{xs.first, xs.first + xs.second, ys.first, ys.first + ys.second});
  int children = 0;
  // The only child, whichever it is, has the mother's background.
  for (GAGenome* child : {sister, brother}) {
    if (!child) continue;
    const bool from_mother = child == sister || !sister;
    take_all(as_mine(*child), from_mother ? mother : father);
    for (const Block& b : blocks) b.copy(as_mine(*child), from_mother ? father : mother);
    ++children;
  }
  return children;
}

int MyOperators::BestQuadrantCrossover(const GAGenome& mother_genome,
                                       const GAGenome& father_genome, GAGenome* sister,
                                       GAGenome* brother) {
  const MyAlleleGenome& mother = as_mine(mother_genome);
  const MyAlleleGenome& father = as_mine(father_genome);
  const int w = mother.width(), h = mother.height();
  if (!mother.feasible || !father.feasible || w < 3 || h < 3)
    return OnePointCrossover(mother_genome, father_genome, sister, brother);
  if (sister && brother) {
    for_each_ninth(w, h, false, [&](const Block& b) {
      const bool father_leaner =
          mother.count_on(b.x0, b.x1, b.y0, b.y1) > father.count_on(b.x0, b.x1, b.y0, b.y1);
      const MyAlleleGenome& lean = father_leaner ? father : mother;
      const MyAlleleGenome& other = father_leaner ? mother : father;
      b.copy(as_mine(*sister), lean);
      b.copy(as_mine(*brother), GAFlipCoin(0.75) ? lean : other);
    });
    return 2;
  }
  GAGenome* child = sister ? sister : brother;
  if (!child) return 0;
  for_each_ninth(w, h, true, [&](const Block& b) {
    const bool father_leaner =
        mother.count_on(b.x0, b.x1, b.y0, b.y1) > father.count_on(b.x0, b.x1, b.y0, b.y1);
    b.copy(as_mine(*child), father_leaner ? father : mother);
  });
  return 1;
}

int MyOperators::FlipMutator(GAGenome& genome, float p) {
  MyAlleleGenome& g = as_mine(genome);
  if (p <= 0) return 0;
  int nm = picks(p);
  if (nm >= 1) {
    for (int flips = 0; flips < nm;) {
      int x, y;
      if (!g.random_free_cell(x, y)) {
        --nm;
        continue;
      }
      flip(g, x, y);
      ++flips;
    }
  } else {
    nm = 0;
    for (int x = g.width() - 1; x >= 0; --x)
      for (int y = g.height() - 1; y >= 0; --y)
        if (g.is_free(y * g.width() + x) && GAFlipCoin(p)) {
          flip(g, x, y);
          ++nm;
        }
  }
  if (nm > 0) g.clear_state();
  return nm;
}

int MyOperators::SwapMutator(GAGenome& genome, float p) {
  MyAlleleGenome& g = as_mine(genome);
  if (p <= 0) return 0;
  int nm = picks(p);
  if (nm >= 1) {
    for (int swaps = 0; swaps < nm;) {
      int x, y, x2, y2;
      if (!g.random_free_cell(x, y) || !g.other_free_cell(x, y, x2, y2)) {
        --nm;
        continue;
      }
      swap_genes(g, x, y, x2, y2);
      ++swaps;
    }
  } else {
    nm = 0;
    for (int x = g.width() - 1; x >= 0; --x)
      for (int y = g.height() - 1; y >= 0; --y) {
        int x2, y2;
        if (g.is_free(y * g.width() + x) && GAFlipCoin(p) && g.other_free_cell(x, y, x2, y2)) {
          swap_genes(g, x, y, x2, y2);
          ++nm;
        }
      }
  }
  if (nm > 0) g.clear_state();
  return nm;
}

// Each block loses base stations with probability p plus p times its share of those on, so
// dense blocks lose more. The share leaves out the last column and row.
int MyOperators::VariableMutator(GAGenome& genome, float p) {
  MyAlleleGenome& g = as_mine(genome);
  const int w = g.width(), h = g.height();
  if (w < 3 || h < 3) return FlipMutator(genome, p);
  if (p <= 0) return 0;
  g.active = g.count_on(0, w - 1, 0, h - 1);
  int count = 0;
  for_each_ninth(w, h, false, [&](const Block& b) {
    const float q = static_cast<float>(g.density(b.x0, b.x1, b.y0, b.y1) * p + p);
    count += g.switch_off(b.x0, b.x1, b.y0, b.y1, q);
  });
  if (count > 0) g.clear_state();
  return count;
}
