#include "search/MyAlleleSetArray.h"

namespace {

const _myalleletype empty_alleles[] = {no_tx};
const _myalleletype fixed_alleles[] = {tx_fixed};
const _myalleletype free_alleles[] = {tx_off, tx_on};

}  // namespace

MyAlleleSetArray::MyAlleleSetArray(const tk::array2<int>& cells)
    : empty_set(1, empty_alleles), fixed_set(1, fixed_alleles), free_set(2, free_alleles) {
  for (int r = 0; r <= cells.high1(); ++r)
    for (int c = 0; c <= cells.high2(); ++c) {
      const int cell = cells(r, c);
      if (cell == 0) {
        add_shared(empty_set);
        continue;
      }
      ++tx_count;
      if (cell < 0) {
        ++fixed_count;
        add_shared(fixed_set);
      } else {
        add_shared(free_set);
      }
    }
}

// add() gives the new entry a core of its own; linking makes all cells of a kind share one.
void MyAlleleSetArray::add_shared(GAAlleleSet<_myalleletype>& shared) {
  add(shared);
  aset[sz - 1]->link(shared);
}
