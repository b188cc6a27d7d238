#include "search/Trl_HbbWalker.h"

#include <algorithm>
#include <cstdint>

#include "toolkit/error.h"

Trl_HbbWalker::Trl_HbbWalker(int n, int S, int f)
    : total(n),
      fixed(f),
      stagnation_limit(limit_for(S)),
      stagnation(0),
      best_size(n),
      step(n / 2),
      last_ok(true),
      exhausted(false),
      halving(true),
      counts(n) {
  removed.reserve(static_cast<size_t>(std::max(n, 0)) + 1);
}

int Trl_HbbWalker::limit_for(int S) {
  TK_ASSERT(S >= 0 && S <= 31, "stagnation exponent out of 0 to 31");
  if (S < 0 || S > 31) return 0;
  // S = 31 reaches the sign bit: the limit comes out negative and ends the walk at once.
  const int32_t shifted = static_cast<int32_t>(static_cast<uint32_t>(1) << S);
  return shifted >> 1;
}

bool Trl_HbbWalker::next() {
  if (stagnation_limit != 0 && stagnation > stagnation_limit) return false;
  if (last_ok) {
    if (removed.empty()) return first_candidate();
    if (grow_after_success()) return true;
  }
  if (halving && shrink_in_halving()) return true;
  return advance();
}

// Drops the positions from `fixed` up to `step` at once: about half of all when nothing is
// fixed, just one when more than half are fixed.
bool Trl_HbbWalker::first_candidate() {
  removed.push_back(fixed);
  for (int i = fixed; i < step; ++i) append_after_tail(1);
  return true;
}

// After a feasible candidate: remove more, so that the size falls to the best size less the
// step (strictly below the best when this candidate matched it).
bool Trl_HbbWalker::grow_after_success() {
  if (halving) {
    step = (step + 1) / 2;
    if (step == 1) halving = false;
  }
  const int room = total - tail() - 1;
  const int keep = size();
  int add = keep - best_size;
  if (keep == best_size) add += step;
  if (room > 0 && add <= room) {
    append_after_tail(add);
    if (static_cast<int>(removed.size()) < total) return true;
  }
  return false;
}

// After an infeasible candidate in the bisection: give back `step` positions.
bool Trl_HbbWalker::shrink_in_halving() {
  step = (step + 1) / 2;
  if (step == 1) {
    halving = false;
    return false;
  }
  for (int i = 0; i < step; ++i) pop_back();
  return true;
}

// The lexicographic walk over the removed positions, at the length that fits the best size.
bool Trl_HbbWalker::advance() {
  if (!removed.empty()) {
    int add = size() - best_size;
    while (!removed.empty()) {
      const int room = total - tail() - 1;
      if (add < room) {
        if (room > 0) {
          ++removed.back();
          add = size() - best_size;
          append_after_tail(add);
          return true;
        }
        pop_back();
        if (!removed.empty()) {
          ++removed.back();
          if (removed.back() < total) return true;
        }
        break;
      }
      pop_back();
      ++add;
    }
  }
  exhausted = true;
  return false;
}

void Trl_HbbWalker::write(tk::array<int>& selected, int& used) const {
  for (int i = 0; i < total; ++i) selected[i] = 1;
  for (int position : removed) selected[position] = 0;
  used = size();
}

void Trl_HbbWalker::failed() {
  if (!halving) ++stagnation;
  last_ok = false;
}

void Trl_HbbWalker::succeeded() {
  const int k = size();
  if (stagnation_limit != 0 && !halving) ++stagnation;
  if (k < best_size) {
    best_size = k;
    stagnation = 0;
  }
  last_ok = true;
  // Adding a ready-made one keeps the count in place: no temporary number per candidate.
  static const tk::integer one(1);
  counts[k - 1] += one;
}

int Trl_HbbWalker::tail() const {
  if (removed.empty()) {
    tk::error_handler(1, "dlist::tail(): empty list");
    return -1;
  }
  return removed.back();
}

void Trl_HbbWalker::pop_back() {
  if (removed.empty()) {
    tk::error_handler(1, "dlist::pop_back on empty list.");
    return;
  }
  removed.pop_back();
}

void Trl_HbbWalker::append_after_tail(int times) {
  for (int i = 0; i < times; ++i) removed.push_back(tail() + 1);
}
