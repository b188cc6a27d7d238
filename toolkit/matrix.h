// tk::matrix: doubles, n rows by m columns, each row a tk::vector; solve() by Gaussian
// elimination with partial pivoting.
#pragma once

#include <vector>

#include "toolkit/vector.h"

namespace tk {

class matrix {
 public:
  matrix() : n(0), m(0) {}
  matrix(int rows, int columns);

  double& operator()(int i, int j);
  double operator()(int i, int j) const;
  const vector& row(int i) const;
  int dim1() const { return n; }
  int dim2() const { return m; }

  // The one column of an n by 1 matrix.
  vector to_vector() const;
  // The x with (*this) x = b.
  vector solve(const vector& b) const;

 private:
  bool index_ok(int i, int j) const;

  int n, m;
  std::vector<vector> rows;
};

// Solves A x = b in place for an n by n system held row by row in `augmented` (n rows of
// n + 1 entries, b in the last column) by Gaussian elimination with partial pivoting. It
// allocates nothing, for solvers in inner loops; matrix::solve works through it. A singular
// A is the toolkit error of solve, and x is left all zero.
void solve_in_place(double* augmented, int n, double* x);

}  // namespace tk
