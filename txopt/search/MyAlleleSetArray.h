// MyAlleleSetArray: the allele sets of the genome, one per map cell, row by row (the set of
// row r, column c at r * width + c). Empty cells share one set {-1}, fixed base stations one
// set {2}, free ones one set {0, 1}, so a cell's freedom is the size of its set.
#pragma once

#include <ga/GAAllele.h>

#include "search/_myalleletype.h"
#include "toolkit/array2.h"

class MyAlleleSetArray : public GAAlleleSetArray<_myalleletype> {
 public:
  int tx_count = 0;     // cells with a base station
  int fixed_count = 0;  // cells with a fixed one

  // cells: 0 empty, above 0 a free base station, below 0 a fixed one.
  explicit MyAlleleSetArray(const tk::array2<int>& cells);

 private:
  void add_shared(GAAlleleSet<_myalleletype>& shared);

  GAAlleleSet<_myalleletype> empty_set;
  GAAlleleSet<_myalleletype> fixed_set;
  GAAlleleSet<_myalleletype> free_set;
};
