#include "search/MyPopulation.h"

#include "search/MyAlleleGenome.h"
#include "search/MyAlleleSetArray.h"
#include "search/Trl_GaContext.h"

MyPopulation::MyPopulation(const tk::array2<int>& cells, const tk::array<int>& tx_cells,
                           int size, GAGenome::Initializer initializer,
                           GAGenome::SexualCrossover crossover, GAGenome::Mutator mutator)
    : GAPopulation() {
  Trl_GaContext& context = Trl_GaContext::current();
  context.allele_sets.reset(new MyAlleleSetArray(cells));
  context.tx_cells = tx_cells;
  const int width = cells.high2() + 1, height = cells.high1() + 1;
  for (int i = 0; i < size; ++i)
    add(new MyAlleleGenome(width, height, initializer, crossover, mutator));
}

MyPopulation::MyPopulation(const MyAlleleGenome& genome, int size) : GAPopulation(genome, size) {}
