#include "search/MyAlleleGenome.h"

#include <ga/garandom.h>

#include <algorithm>

#include "search/MyAlleleSetArray.h"
#include "search/MyOperators.h"
#include "search/MyPopulation.h"
#include "search/Trl_Assignment.h"
#include "search/Trl_GaContext.h"
#include "toolkit/error.h"

namespace {

const int test_population_size = 15;  // genomes per step of the expert bisection

}  // namespace

const MyAlleleSetArray& MyAlleleGenome::allele_sets() {
  const Trl_GaContext& context = Trl_GaContext::current();
  TK_ASSERT(context.allele_sets != nullptr, "genetic search genome without allele sets");
  return *context.allele_sets;
}

MyAlleleGenome::MyAlleleGenome(int width, int height, GAGenome::Initializer initializer,
                               GAGenome::SexualCrossover crossover, GAGenome::Mutator mutator)
    : GA2DArrayGenome<_myalleletype>(width, height, Objective) {
  this->initializer(initializer ? initializer : UniformInitializer);
  this->crossover(crossover ? crossover : MyOperators::OnePointCrossover);
  this->mutator(mutator ? mutator : MyOperators::FlipMutator);
  comparator(Comparator);
  // Empty and fixed cells hold their only allele from the start.
  const Trl_GaContext& context = Trl_GaContext::current();
  if (context.allele_sets && context.allele_sets->size() == width * height)
    for (int i = 0; i < width * height; ++i)
      if (!is_free(i)) this->a[i] = context.allele_sets->set(i).allele(0);
}

MyAlleleGenome::MyAlleleGenome(const MyAlleleGenome& other)
    : GA2DArrayGenome<_myalleletype>(other.nx, other.ny) {
  copy(other);
}

GAGenome* MyAlleleGenome::clone(GAGenome::CloneMethod flag) const {
  MyAlleleGenome* copy_of = new MyAlleleGenome(nx, ny);
  if (flag == CONTENTS) {
    copy_of->copy(*this);
  } else {
    copy_of->GAGenome::copy(*this);
    copy_of->minX = minX;
    copy_of->minY = minY;
    copy_of->maxX = maxX;
    copy_of->maxY = maxY;
  }
  return copy_of;
}

void MyAlleleGenome::copy(const GAGenome& other) {
  if (&other == this) return;
  GA2DArrayGenome<_myalleletype>::copy(other);
  const MyAlleleGenome* mine = dynamic_cast<const MyAlleleGenome*>(&other);
  if (mine) {
    feasible = mine->feasible;
    active = mine->active;
  }
}

int MyAlleleGenome::equal(const GAGenome& other) const {
  const MyAlleleGenome* mine = dynamic_cast<const MyAlleleGenome*>(&other);
  if (!mine) return 0;
  if (feasible != mine->feasible || active != mine->active) return 0;
  return GA2DArrayGenome<_myalleletype>::equal(other);
}

int MyAlleleGenome::count_on(int x0, int x1, int y0, int y1) const {
  int count = 0;
  for (int y = y0; y < y1; ++y)
    for (int x = x0; x < x1; ++x)
      if (gene(x, y) == tx_on) ++count;
  return count;
}

double MyAlleleGenome::density(int x0, int x1, int y0, int y1) const {
  if (active < 1) return 0;
  return static_cast<double>(count_on(x0, x1, y0, y1)) / active;
}

void MyAlleleGenome::clear_state() {
  feasible = false;
  active = 0;
  _evaluated = gaFalse;
}

void MyAlleleGenome::copy_block(const MyAlleleGenome& source, int x, int y, int source_x,
                                int source_y, int width, int height) {
  if (width > 0 && height > 0 && x >= 0 && y >= 0 && source_x >= 0 && source_y >= 0)
    GA2DArrayGenome<_myalleletype>::copy(source, x, y, source_x, source_y, width, height);
  clear_state();
}

tk::array<int> MyAlleleGenome::decode(int& count) const {
  tk::array<int> selected(Trl_GaContext::current().tx_cells.size());
  decode_into(selected, count);
  return selected;
}

void MyAlleleGenome::decode_into(tk::array<int>& selected, int& count) const {
  const tk::array<int>& tx_cells = Trl_GaContext::current().tx_cells;
  count = 0;
  for (int i = 0; i < tx_cells.size(); ++i) {
    const _myalleletype g = this->a[tx_cells[i]];
    selected[i] = g == tx_on || g == tx_fixed ? 1 : 0;
    count += selected[i];
  }
}

bool MyAlleleGenome::is_free(int i) const { return allele_sets().set(i).size() > 1; }

bool MyAlleleGenome::random_free_cell(int& x, int& y) const {
  const int n = size();
  int index = 0, tries = 0;
  do {
    index = std::min(static_cast<int>(GARandomFloat() * n), n - 1);
    ++tries;
  } while (!is_free(index) && tries <= n);
  if (!is_free(index)) {
    x = y = -1;
    return false;
  }
  x = index % width();
  y = index / width();
  return true;
}

bool MyAlleleGenome::other_free_cell(int x0, int y0, int& x, int& y) const {
  const int n = size();
  for (int t = 0; t <= n; ++t) {
    if (!random_free_cell(x, y)) return false;
    if (x != x0 || y != y0) return true;
  }
  x = y = -1;
  return false;
}

int MyAlleleGenome::switch_off(int x0, int x1, int y0, int y1, float p) {
  if (p <= 0) return 0;
  int count = 0;
  for (int x = x0; x < x1; ++x)
    for (int y = y0; y < y1; ++y)
      if (gene(x, y) == tx_on && GAFlipCoin(p)) {
        gene(x, y, tx_off);
        ++count;
      }
  return count;
}

// Free genes keep what they hold; only as many more are switched on as k asks for. A target
// that can't be met (k above the base stations there are) is lowered as cells run out.
void MyAlleleGenome::fill(int k) {
  resize(GAGenome::ANY_SIZE, GAGenome::ANY_SIZE);
  clear_state();
  const MyAlleleSetArray& sets = allele_sets();
  for (int i = 0; i < size(); ++i)
    if (!is_free(i)) this->a[i] = sets.set(i).allele(0);
  int target = k - sets.fixed_count, placed = 0, misses = 0;
  while (placed < target) {
    int x, y;
    if (!random_free_cell(x, y)) {
      --target;
    } else if (gene(x, y) == tx_off) {
      gene(x, y, tx_on);
      ++placed;
    } else if (++misses >= target) {
      --target;
      misses = 0;
    }
  }
}

void MyAlleleGenome::UniformInitializer(GAGenome& genome) {
  MyAlleleGenome& g = static_cast<MyAlleleGenome&>(genome);
  const MyAlleleSetArray& sets = allele_sets();
  for (int x = g.nx - 1; x >= 0; --x)
    for (int y = g.ny - 1; y >= 0; --y) {
      const GAAlleleSet<_myalleletype>& set = sets.set(y * g.nx + x);
      const int choice = set.size() == 1 ? 0 : static_cast<int>(GARandomFloat() * set.size());
      g.gene(x, y, set.allele(choice));
    }
  g.clear_state();
}

void MyAlleleGenome::ExpertInitializer(GAPopulation& population) {
  const MyAlleleGenome& first = static_cast<const MyAlleleGenome&>(population.individual(0));
  const int n = allele_sets().tx_count;
  double low = 0, high = 1, density = 0.5;
  while (n * (high - low) / 2 >= 1) {
    MyPopulation test(first, test_population_size);
    const int k = static_cast<int>(n * density);
    for (int i = 0; i < test.size(); ++i) static_cast<MyAlleleGenome&>(test.individual(i)).fill(k);
    test.evaluate(gaTrue);
    int feasible = 0;
    for (int i = 0; i < test.size(); ++i)
      if (static_cast<MyAlleleGenome&>(test.individual(i)).feasible) ++feasible;
    if (feasible > 0) {
      high = density;
      density -= (high - low) / 2;
    } else {
      low = density;
      density += (high - low) / 2;
    }
  }
  const int k = static_cast<int>(n * density);
  for (int i = 0; i < population.size(); ++i)
    static_cast<MyAlleleGenome&>(population.individual(i)).fill(k);
}

// The whole part ranks by the number of base stations on, the fraction by power; an infeasible
// or empty genome scores above any feasible one.
float MyAlleleGenome::Objective(GAGenome& genome) {
  MyAlleleGenome& g = static_cast<MyAlleleGenome&>(genome);
  const Trl_GaContext& context = Trl_GaContext::current();
  TK_ASSERT(context.assignment != nullptr, "genetic search evaluation without a candidate");
  Trl_Assignment& candidate = *context.assignment;
  const float worst = static_cast<float>(context.allele_sets->tx_count + 1);
  int count = 0;
  g.decode_into(candidate.selected, count);
  g.active = count;
  g.feasible = false;
  if (count == 0) return worst;
  candidate.used = count;
  g.feasible = candidate.solve(context.validate_downlink);
  if (!g.feasible) return worst;
  return static_cast<float>(count + candidate.objective());
}

float MyAlleleGenome::Comparator(const GAGenome& first, const GAGenome& second) {
  const MyAlleleGenome& a = static_cast<const MyAlleleGenome&>(first);
  const MyAlleleGenome& b = static_cast<const MyAlleleGenome&>(second);
  if (a.size() != b.size()) return -1;
  if (a.size() == 0) return 0;
  int differing = 0;
  for (int i = 0; i < a.size(); ++i)
    if (a.a[i] != b.a[i]) ++differing;
  return static_cast<float>(differing) / allele_sets().tx_count;
}
