// tk::array2<T>: a two-dimensional array with bounds 0..n-1 and 0..m-1, stored by rows.
#pragma once

#include <cstdio>
#include <vector>

#include "toolkit/error.h"

namespace tk {

template <class T>
class array2 {
 public:
  array2() : n(0), m(0) {}
  array2(int rows, int columns) : n(rows), m(columns) {
    if (rows < 0 || columns < 0) {
      char text[64];
      std::snprintf(text, sizeof text, "array: bad array bounds [0..%d]", rows < 0 ? rows - 1 : columns - 1);
      error_handler(1, text);
      n = m = 0;
    }
    items.resize(static_cast<size_t>(n) * static_cast<size_t>(m));
  }

  T& operator()(int i, int j) {
    check(i, j);
    return items[static_cast<size_t>(i) * m + j];
  }
  const T& operator()(int i, int j) const {
    check(i, j);
    return items[static_cast<size_t>(i) * m + j];
  }

  int low1() const { return 0; }
  int high1() const { return n - 1; }
  int low2() const { return 0; }
  int high2() const { return m - 1; }

 private:
  void check(int i, int j) const {
    if (i < 0 || i >= n || j < 0 || j >= m) error_handler(2, "array::entry index out of range");
  }

  std::vector<T> items;
  int n, m;
};

}  // namespace tk
