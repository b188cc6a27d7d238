// The inner loops of the uplink iteration, four doubles at a time (AVX2) or eight (AVX-512),
// chosen at run time from what the processor has. Every value is computed with the
// operations, in the order, of the plain loops in Trl_Assigner: lanes hold different users or
// different rows, never two terms of one sum, so each result is the same to the bit.
//
// On AVX-512 the start from below and the simultaneous sweep find each user's least need in
// two steps. First an estimate for every row: (activity * I + noise) / g, with one fused
// operation and an approximate reciprocal of the gain (relative error under 2^-14). The exact
// need, target * ((I - own power * g) * activity + noise) / g, differs from target times it
// by the user's own part, target * activity * own power, the same on every row, and by a few
// units in the last place. Then the exact need, divided as the plain loop does, only for the
// rows whose estimate lies within 2^-10 (relative, plus 2^-1000) of the least estimate. The
// row with the least exact need, and every row tying with it, is always among those, so the
// strict minimum over the rows in their order is the plain loop's. Inputs outside the ranges
// where this holds (a target, activity or noise far from 1, a negative power) take the plain
// order. Mostly one row is near, and its need is the only division. Where the values allow,
// the estimates are taken in single precision, sixteen users a vector. The sweep
// also sums the new powers into the next sweep's interference while a block of users is still
// in cache, so each sweep reads the gain table from memory once. Large sweeps share the rows
// out between the caller and a kept worker thread, which meet once per block of users; each
// row's sum stays with one thread, in the users' order. Whether a large sweep is shared
// follows what shared and lone sweeps have cost lately.
#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "search/Trl_SplitChoice.h"

class Trl_UplinkKernels {
 public:
  // The selected rows of one solve: gains[c][r] and the noise of each row, W.
  struct rows {
    const double* const* gains;
    const double* noise;
    int used;
    int users;
    // Every gain of the table lies in [2^-1020, 2^1020], where the approximate reciprocal
    // keeps its relative error; the eight-lane loops run only then.
    bool gains_normal = false;
  };
  // Per user: the target, the activity, and the server row noted as a double; for the
  // simultaneous sweep, optionally, the power limit, so that the sweep also checks it.
  struct users {
    const double* target;
    const double* activity;
    double* server;
    const double* limit = nullptr;
  };
  // What the last simultaneous sweep found out on the way, when it ran the eight-lane loops
  // with the users' limits: whether a new power exceeds its user's limit, and the largest
  // change as largest_change gives it.
  struct checks {
    bool ready = false;
    bool over_limit = false;
    double largest_change = 0;
  };

  // True when the processor has AVX2 and the wide loops are switched on.
  static bool available();
  // True when the eight-lane loops run: the processor has AVX-512 and they are switched on.
  static bool eight_lanes();
  // Switch the wide loops off (the plain loops then run), or only the eight-lane ones, for
  // comparisons.
  static bool enabled;
  static bool eight_lanes_enabled;
  // The eight-lane loops estimate in single precision, sixteen users a vector, where the
  // inputs allow (see float_estimates); off, always in double precision.
  static bool float_keys_enabled;
  // The eight-lane loops share the rows out between this many threads (1 or 2; 2 where the
  // machine has two cores or more) when a sweep has at least two_threads_from gains;
  // smaller sweeps would spend more on the threads meeting than they save.
  static int threads;
  static double two_threads_from;
  // Each large sweep is shared or not as its recent cost says (Trl_SplitChoice); off, every
  // large sweep is shared.
  static bool measure_threads;

  // sum[k] = the sum of p[j] * gains[k][j] over j < n for k < count, grouped as the plain
  // weighted sum groups it: four interleaved partial sums, the rest into the first.
  static void weighted_sums(const double* p, const double* const* gains, int count, int n,
                            double* sum);
  // True when each of the n values lies in [low, high] (NaN does not).
  static bool all_within(const double* v, int n, double low, double high);
  // True when each of the n gains lies in [2^-1020, 2^1020].
  static bool normal_gains(const double* g, int n);
  // The largest of now / before and before / now over n users, as the plain loop finds it:
  // a user's change is the first ratio when it is the greater, else the second; the result
  // starts at 0 and takes a change only when it is greater (so NaN never counts).
  static double largest_change(const double* now, const double* before, int n);
  // The start from below: p[r] = least over rows of target / g * noise.
  void least_alone(const rows& R, const double* target, double* p);
  // One simultaneous sweep into p (whatever it holds on entry) from the powers `old`.
  // `continuing` says that `old` is what the last call of either function gave on the same
  // rows, so that the interference summed then still holds; otherwise it is summed here.
  void simultaneous(const rows& R, const users& U, const double* old, bool continuing, double* p);
  // The checks of the last sweep of any kind (not ready after any other).
  const checks& last_checks() const { return found; }
  void forget_checks() { found = checks(); }

  // Takes the rows of a solve for the in-sequence sweeps: copies their gains user-major.
  void bind(const rows& R);
  // One in-sequence sweep on the bound rows: users from the last to the first, each against
  // the powers already updated. `running` holds the powers on entry and, like p, the new
  // ones on return.
  void in_sequence(const rows& R, const users& U, double* running, double* p);

 private:
  void interference(const rows& R, const double* running);
  static bool estimable_rows(const rows& R);
  bool float_estimates(const rows& R, const double* I);
  template <bool start>
  void least_needs(const rows& R, const users& U, const double* old, double* p);

  // The gains user-major, width entries per user (used rounded up to 4, the rest 1), and the
  // interference and noise of each row, padded with +inf and 0 so that no padding row wins.
  std::vector<double> by_user;
  std::vector<double> total;
  std::vector<double> noise;
  int width = 0;
  // The simultaneous sweep: the interference of each row from the powers before the sweep,
  // and from the new ones (filled by the eight-lane loops as they go, with each row's four
  // partial sums).
  std::vector<double> sums;
  std::vector<double> next_sums;
  std::vector<double> partial;
  std::vector<float> float_row_noise;
  std::vector<float> float_row_sums;
  // Per block (two in turn) and thread, the least and second least key of each group of
  // eight users, and how many times each thread has come to the meeting point.
  std::vector<int64_t> keys;
  struct alignas(64) meeting_point {  // a cache line each: one thread writes, the other reads
    std::atomic<int> count{0};
  };
  meeting_point meeting[2];
  Trl_SplitChoice split_choice;
  checks found;
  bool next_sums_ready = false;
  bool next_powers_nonnegative = false;  // and the powers summed into them were all 0 or above
};
