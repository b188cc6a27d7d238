#include "propagation/Trl_ProfileRuns.h"

#include <algorithm>

#include "network/Trl_TxBitvector.h"

void Trl_ProfileRuns::index(const double* H, const Trl_TxBitvector& B, int count) {
  heights = H;
  bits = &B;
  n = count;
  first_open = n;
  last_open_below.assign(static_cast<size_t>(n) + 1, -1);
  runs.clear();
  for (int i = 0; i < n; ++i) {
    last_open_below[i + 1] = last_open_below[i];
    if (!B.test(i)) {
      if (first_open == n) first_open = i;
      last_open_below[i + 1] = i;
      continue;
    }
    if (runs.empty() || runs.back().end != i) runs.push_back(run{i, i, 0, 0, H[i]});
    run& r = runs.back();
    r.end = i + 1;
    r.sum_h += H[i];
    r.sum_i += i;
    r.min_h = std::min(r.min_h, H[i]);
  }
}

double Trl_ProfileRuns::height_sum(const run& r, double A, double slope) const {
  // i * slope is largest at one end of the run; a margin of a micrometre keeps rounding from
  // deciding whether a cell is above the line.
  const double lowest = r.min_h - A - std::max(slope * r.start, slope * (r.end - 1));
  if (lowest > 1e-6) return r.sum_h - slope * r.sum_i - (r.end - r.start) * A;
  double sum = 0;
  for (int i = r.start; i < r.end; ++i) sum += std::max(0.0, heights[i] - i * slope - A);
  return sum;
}
