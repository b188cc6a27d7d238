// Trl_MatrixT<T, S>: the dense row-major matrix behind every raster, element (column c, row
// r) at r * columns + c. T is the element type, S the scalar type of sums and tolerances.
// Every operation is virtual and works through the four accessors, so that a matrix kept
// elsewhere (a mapped file) inherits the whole arithmetic. No operation checks ranges or
// shapes: the caller owns that. Element-wise loops run from the last index down to 0.
#pragma once

#include <cstdint>

template <class T, class S>
class Trl_MatrixT {
 public:
  T* data;
  std::uint32_t rows;
  std::uint32_t columns;
  std::uint32_t size;

  Trl_MatrixT();
  Trl_MatrixT(std::uint32_t rows, std::uint32_t columns, T initial = T());
  Trl_MatrixT(const Trl_MatrixT&) = delete;
  Trl_MatrixT& operator=(const Trl_MatrixT&) = delete;
  virtual ~Trl_MatrixT();

  virtual Trl_MatrixT* assign(const Trl_MatrixT& a);
  virtual bool equals(const Trl_MatrixT& a) const;
  virtual bool differs(const Trl_MatrixT& a) const;
  virtual bool equals_within(const Trl_MatrixT& a, S tolerance) const;
  virtual Trl_MatrixT* negate_from(const Trl_MatrixT& a);
  virtual Trl_MatrixT* negate();
  virtual Trl_MatrixT* sum_of(const Trl_MatrixT& a, const Trl_MatrixT& b);
  virtual Trl_MatrixT* add(const Trl_MatrixT& a);
  virtual Trl_MatrixT* difference_of(const Trl_MatrixT& a, const Trl_MatrixT& b);
  virtual Trl_MatrixT* subtract(const Trl_MatrixT& a);
  virtual Trl_MatrixT* product_of(const Trl_MatrixT& a, const Trl_MatrixT& b);
  virtual Trl_MatrixT* scaled_of(const Trl_MatrixT& a, T s);
  virtual Trl_MatrixT* scaled_by(T s, const Trl_MatrixT& a);
  virtual Trl_MatrixT* scale(T s);
  virtual Trl_MatrixT* divided_of(const Trl_MatrixT& a, T s);
  virtual Trl_MatrixT* divide(T s);
  virtual Trl_MatrixT* operator+=(const Trl_MatrixT& a) { return add(a); }
  virtual Trl_MatrixT* operator-=(const Trl_MatrixT& a) { return subtract(a); }
  virtual Trl_MatrixT* operator*=(T s) { return scale(s); }
  virtual Trl_MatrixT* operator/=(T s) { return divide(s); }
  // The by-value operations build a plain matrix in memory, whatever this is.
  virtual Trl_MatrixT* operator+(const Trl_MatrixT& a) const;
  virtual Trl_MatrixT* copy() const;
  virtual Trl_MatrixT* operator-(const Trl_MatrixT& a) const;
  virtual Trl_MatrixT* operator-() const;
  virtual Trl_MatrixT* operator*(T s) const;
  virtual Trl_MatrixT* operator/(T s) const;
  virtual Trl_MatrixT* make_identity();
  // Fills this from a by the nearest upper-left cell, no averaging.
  virtual Trl_MatrixT* resample(const Trl_MatrixT& a);
  // Fills this from columns c0..c1-1 and rows r0..r1-1 of a, zeros beyond a.
  virtual Trl_MatrixT* window_of(const Trl_MatrixT& a, std::uint32_t c0, std::uint32_t r0, std::uint32_t c1,
                                 std::uint32_t r1);
  virtual T maximum() const;
  virtual T minimum() const;
  virtual T smallest_positive() const;
  virtual void min_max(T& low, T& high) const;
  virtual void resize(std::uint32_t rows, std::uint32_t columns, bool clear);
  virtual S sum() const;
  virtual Trl_MatrixT* clear();
  virtual T get(std::uint32_t c, std::uint32_t r) const { return get(r * columns + c); }
  virtual T& ref(std::uint32_t c, std::uint32_t r) { return ref(r * columns + c); }
  virtual T get(std::uint32_t i) const { return data[i]; }
  virtual T& ref(std::uint32_t i) { return data[i]; }

 private:
  // A plain matrix holding a copy of this matrix's elements, read through the accessors.
  Trl_MatrixT* element_copy() const;
};
