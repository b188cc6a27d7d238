#include "toolkit/matrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "toolkit/error.h"

namespace tk {

namespace {
double spare_entry;
}

matrix::matrix(int rows_count, int columns) : n(rows_count), m(columns) {
  if (rows_count < 0 || columns < 0) {
    error_handler(1, "matrix: negative dimension.");
    n = m = 0;
    return;
  }
  rows.assign(static_cast<size_t>(n), vector(m));
}

bool matrix::index_ok(int i, int j) const {
  if (i < 0 || i >= n) {
    error_handler(1, "matrix: row index out of range");
    return false;
  }
  if (j < 0 || j >= m) {
    error_handler(1, "matrix: column index out of range");
    return false;
  }
  return true;
}

double& matrix::operator()(int i, int j) {
  if (!index_ok(i, j)) return spare_entry;
  return rows[static_cast<size_t>(i)][j];
}

double matrix::operator()(int i, int j) const {
  if (!index_ok(i, j)) return 0.0;
  return rows[static_cast<size_t>(i)][j];
}

const vector& matrix::row(int i) const {
  static const vector empty;
  if (i < 0 || i >= n) {
    error_handler(1, "matrix: row index out of range");
    return empty;
  }
  return rows[static_cast<size_t>(i)];
}

vector matrix::to_vector() const {
  if (m != 1) {
    error_handler(1, "error: cannot make vector from matrix\n");
    return vector();
  }
  vector v(n);
  for (int i = 0; i < n; ++i) v[i] = rows[static_cast<size_t>(i)][0];
  return v;
}

vector matrix::solve(const vector& b) const {
  if (n != m || b.dim() != n) {
    error_handler(1, "Solve: wrong dimensions\n");
    return vector();
  }
  const size_t width = static_cast<size_t>(n) + 1;
  std::vector<double> augmented(static_cast<size_t>(n) * width);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) augmented[i * width + j] = rows[static_cast<size_t>(i)][j];
    augmented[i * width + n] = b[i];
  }
  vector x(n);
  solve_in_place(augmented.data(), n, x.data());
  return x;
}

void solve_in_place(double* a, int n, double* x) {
  const size_t width = static_cast<size_t>(n) + 1;
  auto at = [a, width](int i, int j) -> double& { return a[i * width + j]; };
  for (int k = 0; k < n; ++k) {
    int pivot = k;
    for (int i = k + 1; i < n; ++i)
      if (std::fabs(at(i, k)) > std::fabs(at(pivot, k))) pivot = i;
    if (at(pivot, k) == 0.0) {
      error_handler(1, "matrix::solve: matrix has not full rank.");
      std::fill(x, x + n, 0.0);
      return;
    }
    if (pivot != k) std::swap_ranges(&at(k, 0), &at(k, 0) + width, &at(pivot, 0));
    for (int i = k + 1; i < n; ++i) {
      const double f = at(i, k) / at(k, k);
      if (f == 0.0) continue;
      for (int j = k; j <= n; ++j) at(i, j) -= f * at(k, j);
    }
  }
  for (int i = n - 1; i >= 0; --i) {
    double s = at(i, n);
    for (int j = i + 1; j < n; ++j) s -= at(i, j) * x[j];
    x[i] = s / at(i, i);
  }
}

}  // namespace tk
