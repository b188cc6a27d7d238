// Trl_ProfileRuns: one terrain profile (heights in m, building bits) indexed by its runs of
// building cells, so that the Xia-Bertoni analysis of any first k cells of it takes a step
// per building instead of a step per cell. The coverage map asks it for every cell of a
// line. The arrays stay the caller's and must live while the index is used.
#pragma once

#include <vector>

class Trl_TxBitvector;

class Trl_ProfileRuns {
 public:
  struct run {
    int start, end;  // building cells start to end - 1; cell end is open, or end is n
    double sum_h;    // m, sum of the heights
    double sum_i;    // sum of the cell numbers
    double min_h;    // m, lowest height
  };

  void index(const double* heights, const Trl_TxBitvector& bits, int n);
  // Sum over the run of the heights above the ground line A + i * slope (m), parts below it
  // counting 0, as the analysis adds them cell by cell; summed in one step when every cell
  // stands clearly above the line.
  double height_sum(const run& r, double A, double slope) const;

  const double* heights = nullptr;
  const Trl_TxBitvector* bits = nullptr;
  int n = 0;
  int first_open = 0;               // the first open cell, n when there is none
  std::vector<int> last_open_below;  // [k]: the last open cell before cell k, -1 when none
  std::vector<run> runs;             // in order along the line
};
