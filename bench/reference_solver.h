// The obvious uplink iteration, the plain reference of the solver's sweeps in the benchmarks.
#pragma once

#include <algorithm>
#include <limits>
#include <vector>

#include "search/Trl_Assigner.h"

// The obvious uplink iteration on the full table indexed [position][user], every row
// looked up through `selected`, I[c] summed afresh, and, in sequence, for every user and row.
struct ReferenceSolver {
  const Trl_Assigner& as;
  std::vector<int> rows;
  explicit ReferenceSolver(const Trl_Assigner& a) : as(a) {
    for (int t = 0; t < a.tx_count; ++t) rows.push_back(t);
  }
  double need(const std::vector<double>& p, int c, int r) const {
    double total = 0;
    for (int j = 0; j < as.rx_count; ++j) total += p[j] * as.path_gain(rows[c], j);
    return ((total - p[r] * as.path_gain(rows[c], r)) * as.rx_activity[r] + as.tx_noise[rows[c]]) *
           as.gamma_up[r] / as.path_gain(rows[c], r);
  }
  int solve(bool in_sequence) const {
    const int n = as.rx_count, used = static_cast<int>(rows.size());
    std::vector<double> p(n, std::numeric_limits<double>::max());
    for (int r = 0; r < n; ++r)
      for (int c = 0; c < used; ++c)
        p[r] = std::min(p[r], as.gamma_up[r] / as.path_gain(rows[c], r) * as.tx_noise[rows[c]]);
    for (int sweep = 1; sweep <= as.max_iterations; ++sweep) {
      std::vector<double> old = p, run = p;
      std::vector<double> interference(used);
      if (!in_sequence)
        for (int c = 0; c < used; ++c) {
          double total = 0;
          for (int j = 0; j < n; ++j) total += old[j] * as.path_gain(rows[c], j);
          interference[c] = total;
        }
      for (int r = n - 1; r >= 0; --r) {
        p[r] = std::numeric_limits<double>::max();
        for (int c = used - 1; c >= 0; --c) {
          const double g = as.path_gain(rows[c], r);
          const double q =
              in_sequence ? need(run, c, r)
                          : ((interference[c] - old[r] * g) * as.rx_activity[r] + as.tx_noise[rows[c]]) *
                                as.gamma_up[r] / g;
          if (q < p[r]) p[r] = q;
        }
        run[r] = p[r];
      }
      double worst = 0;
      for (int r = 0; r < n; ++r) {
        if (p[r] > as.rx_max_power[r]) return -1;
        worst = std::max(worst, std::max(p[r] / old[r], old[r] / p[r]));
      }
      if (worst < as.tolerance) return sweep;
    }
    return -1;
  }
};
