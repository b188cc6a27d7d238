// Trl_ExtMatrixT: the matrix of the coverage raster, with two flags and three numbers that
// travel with it (all zero; nothing reads them).
#pragma once

#include "raster/Trl_MatrixT.h"

template <class T, class S>
class Trl_ExtMatrixT : public Trl_MatrixT<T, S> {
 public:
  Trl_ExtMatrixT() {}
  Trl_ExtMatrixT(std::uint32_t rows, std::uint32_t columns) : Trl_MatrixT<T, S>(rows, columns) {}
  ~Trl_ExtMatrixT() override {}

  bool flag_a = false;
  bool flag_b = false;
  double extra_a = 0, extra_b = 0, extra_c = 0;
};
