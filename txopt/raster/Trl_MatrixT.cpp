#include "raster/Trl_MatrixT.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>

template <class T, class S>
Trl_MatrixT<T, S>::Trl_MatrixT() : data(nullptr), rows(0), columns(0), size(0) {}

template <class T, class S>
Trl_MatrixT<T, S>::Trl_MatrixT(std::uint32_t r, std::uint32_t c, T initial)
    : data(nullptr), rows(r), columns(c), size(r * c) {
  data = new T[size];
  if (initial == T(0)) {
    std::memset(static_cast<void*>(data), 0, sizeof(T) * size);
  } else {
    for (std::uint32_t i = size; i-- > 0;) data[i] = initial;
  }
}

template <class T, class S>
Trl_MatrixT<T, S>::~Trl_MatrixT() {
  delete[] data;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::assign(const Trl_MatrixT& a) {
  if (&a != this && size) std::memcpy(static_cast<void*>(data), a.data, sizeof(T) * size);
  return this;
}

template <class T, class S>
bool Trl_MatrixT<T, S>::equals(const Trl_MatrixT& a) const {
  for (std::uint32_t i = size; i-- > 0;)
    if (!(get(i) == a.get(i))) return false;
  return true;
}

template <class T, class S>
bool Trl_MatrixT<T, S>::differs(const Trl_MatrixT& a) const {
  for (std::uint32_t i = size; i-- > 0;)
    if (!(get(i) == a.get(i))) return true;
  return false;
}

template <class T>
static double distance_of(T x, T y) {
  return x > y ? static_cast<double>(x - y) : static_cast<double>(y - x);
}
static double distance_of(short x, short y) {
  int d = x > y ? int(x) - int(y) : int(y) - int(x);
  return d;
}
static double distance_of(unsigned short x, unsigned short y) {
  int d = x > y ? int(x) - int(y) : int(y) - int(x);
  return d;
}

template <class T, class S>
bool Trl_MatrixT<T, S>::equals_within(const Trl_MatrixT& a, S tolerance) const {
  for (std::uint32_t i = size; i-- > 0;)
    if (distance_of(get(i), a.get(i)) > static_cast<double>(tolerance)) return false;
  return true;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::negate_from(const Trl_MatrixT& a) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(-a.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::negate() {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(-get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::sum_of(const Trl_MatrixT& a, const Trl_MatrixT& b) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(a.get(i) + b.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::add(const Trl_MatrixT& a) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(get(i) + a.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::difference_of(const Trl_MatrixT& a, const Trl_MatrixT& b) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(a.get(i) - b.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::subtract(const Trl_MatrixT& a) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(get(i) - a.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::product_of(const Trl_MatrixT&, const Trl_MatrixT&) {
  std::cout << "oops, ... not implemented\n";
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::scaled_of(const Trl_MatrixT& a, T s) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(a.get(i) * s);
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::scaled_by(T s, const Trl_MatrixT& a) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(s * a.get(i));
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::scale(T s) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(get(i) * s);
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::divided_of(const Trl_MatrixT& a, T s) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(a.get(i) / s);
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::divide(T s) {
  for (std::uint32_t i = size; i-- > 0;) ref(i) = static_cast<T>(get(i) / s);
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::element_copy() const {
  Trl_MatrixT* result = new Trl_MatrixT(rows, columns);
  for (std::uint32_t i = size; i-- > 0;) result->data[i] = get(i);
  return result;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::operator+(const Trl_MatrixT& a) const {
  return element_copy()->add(a);
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::copy() const {
  return element_copy();
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::operator-(const Trl_MatrixT& a) const {
  return element_copy()->subtract(a);
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::operator-() const {
  return element_copy()->negate();
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::operator*(T s) const {
  return element_copy()->scale(s);
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::operator/(T s) const {
  return element_copy()->divide(s);
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::make_identity() {
  for (std::uint32_t r = 0; r < rows; ++r)
    for (std::uint32_t c = 0; c < columns; ++c) ref(c, r) = static_cast<T>(c == r ? 1 : 0);
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::resample(const Trl_MatrixT& a) {
  double row_factor = static_cast<double>(a.rows) / rows;
  double column_factor = static_cast<double>(a.columns) / columns;
  std::uint32_t k = 0;
  for (std::uint32_t i = 0; i < rows; ++i) {
    std::uint32_t source_row = static_cast<std::uint32_t>(i * row_factor) * a.columns;
    for (std::uint32_t j = 0; j < columns; ++j)
      ref(k++) = a.get(source_row + static_cast<std::uint32_t>(j * column_factor));
  }
  return this;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::window_of(const Trl_MatrixT& a, std::uint32_t c0, std::uint32_t r0,
                                                std::uint32_t c1, std::uint32_t r1) {
  std::uint32_t r_end = r1 < a.rows ? r1 : a.rows;
  std::uint32_t c_end = c1 < a.columns ? c1 : a.columns;
  std::uint32_t k = 0;
  for (std::uint32_t r = r0; r < r_end; ++r) {
    for (std::uint32_t c = c0; c < c_end; ++c) ref(k++) = a.get(c, r);
    for (std::uint32_t c = c_end; c < c1; ++c) ref(k++) = T(0);
  }
  for (std::uint32_t r = r_end; r < r1; ++r)
    for (std::uint32_t c = c0; c < c1; ++c) ref(k++) = T(0);
  return this;
}

template <class T, class S>
T Trl_MatrixT<T, S>::maximum() const {
  T best = get(size - 1);
  for (std::uint32_t i = size - 1; i-- > 0;)
    if (get(i) > best) best = get(i);
  return best;
}

template <class T, class S>
T Trl_MatrixT<T, S>::minimum() const {
  T best = get(size - 1);
  for (std::uint32_t i = size - 1; i-- > 0;)
    if (get(i) < best) best = get(i);
  return best;
}

// The scan never sees the last element, and until it holds a non-zero value every element
// becomes the result, a negative one too.
template <class T, class S>
T Trl_MatrixT<T, S>::smallest_positive() const {
  T result = T(0);
  for (std::uint32_t i = size - 1; i-- > 0;) {
    T v = get(i);
    if (result == T(0))
      result = v;
    else if (v > T(0) && v < result)
      result = v;
  }
  return result;
}

template <class T, class S>
void Trl_MatrixT<T, S>::min_max(T& low, T& high) const {
  low = high = get(size - 1);
  for (std::uint32_t i = size - 1; i-- > 0;) {
    T v = get(i);
    if (v < low) low = v;
    if (v > high) high = v;
  }
}

template <class T, class S>
void Trl_MatrixT<T, S>::resize(std::uint32_t r, std::uint32_t c, bool clear_it) {
  delete[] data;
  rows = r;
  columns = c;
  size = r * c;
  data = new T[size];
  if (clear_it) std::memset(static_cast<void*>(data), 0, sizeof(T) * size);
}

template <class T, class S>
S Trl_MatrixT<T, S>::sum() const {
  S total = S(0);
  for (std::uint32_t i = size; i-- > 0;) total += static_cast<S>(get(i));
  return total;
}

template <class T, class S>
Trl_MatrixT<T, S>* Trl_MatrixT<T, S>::clear() {
  if (size) std::memset(static_cast<void*>(data), 0, sizeof(T) * size);
  return this;
}

template class Trl_MatrixT<double, double>;
template class Trl_MatrixT<short, double>;
template class Trl_MatrixT<unsigned short, double>;
