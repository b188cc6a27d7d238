// The subset enumeration of the simple search: proposes, one after another, subsets of the n
// positions of the working list of base stations, driven only by whether the last one was
// feasible. A bisection on the number of removed positions comes first, then a lexicographic
// walk over the removed positions that only looks at subsets able to match or beat the
// smallest feasible size seen. Positions below `fixed` are never removed.
#pragma once

#include <vector>

#include "toolkit/array.h"
#include "toolkit/integer_vector.h"

class Trl_HbbWalker {
 public:
  int total;             // n, the number of positions
  int fixed;             // positions below this one are never removed
  int stagnation_limit;  // 2^(S-1) for "Max. stagnation" S; 0 means no limit
  int stagnation;        // candidates tried since the last improvement, outside the halving
  int best_size;         // smallest size of a feasible candidate so far
  int step;              // current step of the halving phase
  bool last_ok;          // the last candidate was feasible
  bool exhausted;        // the enumeration has run out
  bool halving;          // the halving phase is in force
  // Positions switched off, strictly ascending; used as a stack. Its room is reserved for
  // all n positions at construction, so that the walk never allocates.
  std::vector<int> removed;
  // counts[k-1]: feasible candidates of size k seen; a statistic nothing reads back.
  tk::integer_vector counts;

  // n positions, "Max. stagnation" S (0 to 31), f fixed positions at the front.
  Trl_HbbWalker(int n, int S, int f);

  // Forms the next candidate; false when there is none (by stagnation or by exhaustion).
  bool next();
  // selected[i] = 0 for a removed position, 1 otherwise, for i from 0 to n-1;
  // used = the candidate's size.
  void write(tk::array<int>& selected, int& used) const;
  // The last candidate was infeasible.
  void failed();
  // The last candidate was feasible.
  void succeeded();

  // The candidate's size: n less the removed positions.
  int size() const { return total - static_cast<int>(removed.size()); }

  // (1 << S) >> 1 in 32-bit two's complement: 0 for S = 0, negative for S = 31.
  static int limit_for(int S);

 private:
  bool first_candidate();
  bool grow_after_success();
  bool shrink_in_halving();
  bool advance();
  // Stack access with the list's own reports for an empty stack.
  int tail() const;
  void pop_back();
  void append_after_tail(int times);
};
