// The inner loops of the uplink iteration, four doubles at a time (AVX2, chosen at run time
// when the processor has it). Every value is computed with the operations, in the order, of
// the plain loops in Trl_Assigner: lanes hold different users or different rows, never two
// terms of one sum, so each result is the same to the bit.
#pragma once

#include <vector>

class Trl_UplinkKernels {
 public:
  // The selected rows of one solve: gains[c][r] and the noise of each row, W.
  struct rows {
    const double* const* gains;
    const double* noise;
    int used;
    int users;
  };
  // Per user: the target, the activity, and the server row noted as a double.
  struct users {
    const double* target;
    const double* activity;
    double* server;
  };

  // True when the processor has AVX2 and the wide loops are switched on.
  static bool available();
  // Switches the wide loops off (the plain loops then run), for comparisons.
  static bool enabled;

  // sum[k] = the sum of p[j] * gains[k][j] over j < n for k < count, grouped as the plain
  // weighted sum groups it: four interleaved partial sums, the rest into the first.
  static void weighted_sums(const double* p, const double* const* gains, int count, int n,
                            double* sum);
  // The start from below: p[r] = least over rows of target / g * noise.
  static void least_alone(const rows& R, const double* target, double* p);
  // One simultaneous sweep into p (all largest on entry) from the powers `old`.
  static void simultaneous(const rows& R, const users& U, const double* old, double* p);

  // Takes the rows of a solve for the in-sequence sweeps: copies their gains user-major.
  void bind(const rows& R);
  // One in-sequence sweep on the bound rows: users from the last to the first, each against
  // the powers already updated. `running` holds the powers on entry and, like p, the new
  // ones on return.
  void in_sequence(const rows& R, const users& U, double* running, double* p);

 private:
  void interference(const rows& R, const double* running);

  // The gains user-major, width entries per user (used rounded up to 4, the rest 1), and the
  // interference and noise of each row, padded with +inf and 0 so that no padding row wins.
  std::vector<double> by_user;
  std::vector<double> total;
  std::vector<double> noise;
  int width = 0;
};
