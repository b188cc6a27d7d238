// MyOperators: the crossovers and mutators of the genetic search on MyAlleleGenome, chosen by
// number. Crossovers take mother, father and up to two children and return how many children
// they made; mutators take a genome and a probability and return how many genes changed.
// Empty cells stay -1 and fixed ones 2: only genes of free cells are ever chosen, and blocks
// are copied between genomes of one map.
#pragma once

#include <ga/GAGenome.h>

class MyOperators {
 public:
  // 0 to 5, in the order of `crossover_names`.
  static int UniformCrossover(const GAGenome& mother, const GAGenome& father, GAGenome* sister,
                              GAGenome* brother);
  static int OnePointCrossover(const GAGenome& mother, const GAGenome& father, GAGenome* sister,
                               GAGenome* brother);
  static int EvenOddCrossover(const GAGenome& mother, const GAGenome& father, GAGenome* sister,
                              GAGenome* brother);
  // A random rectangle of the father inside the mother, and the other way round.
  static int TwoPointsCrossover(const GAGenome& mother, const GAGenome& father, GAGenome* sister,
                                GAGenome* brother);
  // A three by three chequer; each block from the parent with fewer base stations on there.
  static int BestQuadrantCrossover(const GAGenome& mother, const GAGenome& father,
                                   GAGenome* sister, GAGenome* brother);
  // A rectangle that wraps round the edges as on a torus.
  static int CyclicTwoPointsCrossover(const GAGenome& mother, const GAGenome& father,
                                      GAGenome* sister, GAGenome* brother);

  // 0 to 2, in the order of `mutator_names`.
  static int SwapMutator(GAGenome& genome, float p);
  static int FlipMutator(GAGenome& genome, float p);
  // Switches base stations off, more where they stand dense.
  static int VariableMutator(GAGenome& genome, float p);

  static GAGenome::SexualCrossover crossover(int number);
  static GAGenome::Mutator mutator(int number);
  static const char* const crossover_names[6];
  static const char* const mutator_names[3];
};
