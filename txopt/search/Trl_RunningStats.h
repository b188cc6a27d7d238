// Running statistics of a series of numbers (here: sweeps of the power iteration per
// converged solve): count, sum, sum of squares, minimum and maximum.
#pragma once

class Trl_RunningStats {
 public:
  double count;
  double sum;
  double sum_of_squares;
  double minimum;   // the largest finite double until the first value
  double maximum;   // its negative until the first value

  Trl_RunningStats();
  void add(double x);
};
