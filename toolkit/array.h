// tk::array<T>: a one-dimensional array with inclusive bounds low() and high(); every
// index is checked and a bad one reported with number 2.
#pragma once

#include <algorithm>
#include <cstdio>
#include <vector>

#include "toolkit/error.h"

namespace tk {

template <class T>
class array {
 public:
  array() : lo(0), hi(-1) {}
  explicit array(int n) : lo(0), hi(n - 1) {
    if (n < 0) {
      char text[64];
      std::snprintf(text, sizeof text, "array: bad array bounds [0..%d]", n - 1);
      error_handler(1, text);
      hi = -1;
      return;
    }
    items.resize(static_cast<size_t>(n));
  }
  array(int low, int high) : lo(low), hi(high) {
    if (high < low - 1) {
      char text[64];
      std::snprintf(text, sizeof text, "array: bad array bounds [0..%d]", high - low);
      error_handler(1, text);
      hi = low - 1;
      return;
    }
    items.resize(static_cast<size_t>(high - low + 1));
  }

  T& operator[](int i) {
    check(i);
    return items[static_cast<size_t>(i - lo)];
  }
  const T& operator[](int i) const {
    check(i);
    return items[static_cast<size_t>(i - lo)];
  }

  int size() const { return hi - lo + 1; }
  int low() const { return lo; }
  int high() const { return hi; }

  // Sorts by a three-way comparison (-1, 0, 1).
  void sort(int (*cmp)(const T&, const T&)) {
    std::stable_sort(items.begin(), items.end(),
                     [cmp](const T& a, const T& b) { return cmp(a, b) < 0; });
  }

  // Contiguous storage for hot loops that have checked their bounds already.
  T* data() { return items.data(); }
  const T* data() const { return items.data(); }

 private:
  void check(int i) const {
    if (i < lo || i > hi) error_handler(2, "array::entry index out of range");
  }

  std::vector<T> items;
  int lo, hi;
};

}  // namespace tk
