#include "toolkit/matrix.h"

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
  std::vector<std::vector<double>> a(static_cast<size_t>(n), std::vector<double>(static_cast<size_t>(n) + 1));
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) a[i][j] = rows[static_cast<size_t>(i)][j];
    a[i][n] = b[i];
  }
  for (int k = 0; k < n; ++k) {
    int pivot = k;
    for (int i = k + 1; i < n; ++i)
      if (std::fabs(a[i][k]) > std::fabs(a[pivot][k])) pivot = i;
    if (a[pivot][k] == 0.0) {
      error_handler(1, "matrix::solve: matrix has not full rank.");
      return vector(n);
    }
    std::swap(a[k], a[pivot]);
    for (int i = k + 1; i < n; ++i) {
      double f = a[i][k] / a[k][k];
      if (f == 0.0) continue;
      for (int j = k; j <= n; ++j) a[i][j] -= f * a[k][j];
    }
  }
  vector x(n);
  for (int i = n - 1; i >= 0; --i) {
    double s = a[i][n];
    for (int j = i + 1; j < n; ++j) s -= a[i][j] * x[j];
    x[i] = s / a[i][i];
  }
  return x;
}

}  // namespace tk
