// MyAlleleGenome: the genome of the genetic search, a two-dimensional array laid out like the
// compacted base station map (width = map columns, height = map rows, gene (x, y) at
// y * width + x). A gene is an _myalleletype; the allele sets of the running search decide
// which cells are free. Its score is the number of base stations on plus the objective of
// their assignment (0 to 1), or the base station count + 1 when they can't serve the users.
#pragma once

#include <ga/GA2DArrayGenome.h>
#include <ga/GAPopulation.h>

#include "search/_myalleletype.h"
#include "toolkit/array.h"

class MyAlleleSetArray;

class MyAlleleGenome : public GA2DArrayGenome<_myalleletype> {
 public:
  GADefineIdentity("MyAlleleGenome", 251);

  bool feasible = false;  // the last evaluation found a feasible assignment
  int active = 0;         // base stations on at the last evaluation

  // Missing operators fall back to the uniform initialiser, one-point crossover and flip
  // mutator; the evaluator is always Objective and the comparator Comparator.
  MyAlleleGenome(int width, int height, GAGenome::Initializer initializer = nullptr,
                 GAGenome::SexualCrossover crossover = nullptr,
                 GAGenome::Mutator mutator = nullptr);
  MyAlleleGenome(const MyAlleleGenome& other);
  MyAlleleGenome& operator=(const GAGenome& other) {
    copy(other);
    return *this;
  }

  GAGenome* clone(GAGenome::CloneMethod flag = CONTENTS) const override;
  void copy(const GAGenome& other) override;
  int equal(const GAGenome& other) const override;

  // Genes equal to 1 in the half-open block; fixed base stations are not counted.
  int count_on(int x0, int x1, int y0, int y1) const;
  // count_on / active; 0 when active is below 1.
  double density(int x0, int x1, int y0, int y1) const;
  // Forgets the last evaluation; every operator calls it on the genomes it changes.
  void clear_state();
  // Copies a block of `source` to (x, y), clipped to both genomes, then clear_state().
  void copy_block(const MyAlleleGenome& source, int x, int y, int source_x, int source_y,
                  int width, int height);
  // Selected flags in base station position order, and how many are on (fixed ones count).
  tk::array<int> decode(int& count) const;
  void decode_into(tk::array<int>& selected, int& count) const;
  // A random cell whose gene may change; false and (-1, -1) when none is found.
  bool random_free_cell(int& x, int& y) const;
  // A random free cell other than (x0, y0); false and (-1, -1) when none is found.
  bool other_free_cell(int x0, int y0, int& x, int& y) const;
  // Switches off each gene equal to 1 in the block with probability p; returns how many.
  int switch_off(int x0, int x1, int y0, int y1, float p);
  // Exactly k base stations on, fixed ones included, as far as there are free cells.
  void fill(int k);
  // Whether the gene at index i may change.
  bool is_free(int i) const;

  static void UniformInitializer(GAGenome& genome);
  // The population's initialiser: finds by bisection the share of base stations on at which
  // feasible genomes begin, and fills every genome with that many.
  static void ExpertInitializer(GAPopulation& population);
  static float Objective(GAGenome& genome);
  // Share of differing genes, for the sharing scaling scheme.
  static float Comparator(const GAGenome& a, const GAGenome& b);

  static const MyAlleleSetArray& allele_sets();
};
