// MyPopulation: the population of the genetic search. The first constructor makes the allele
// sets of the map and installs them with the gene index of every base station for the
// running search, then adds the genomes; the second clones one genome, for the test
// populations of the expert initialiser.
#pragma once

#include <ga/GAPopulation.h>

#include "toolkit/array.h"
#include "toolkit/array2.h"

class MyAlleleGenome;

class MyPopulation : public GAPopulation {
 public:
  // cells: the compacted map, [row][column]; tx_cells: gene index by base station position.
  MyPopulation(const tk::array2<int>& cells, const tk::array<int>& tx_cells, int size,
               GAGenome::Initializer initializer, GAGenome::SexualCrossover crossover,
               GAGenome::Mutator mutator);
  MyPopulation(const MyAlleleGenome& genome, int size);
};
