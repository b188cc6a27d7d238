// tk::vector: doubles with a dimension, indexes 0 to dimension - 1, bounds checked.
#pragma once

#include <cstddef>
#include <vector>

namespace tk {

class vector {
 public:
  vector() {}
  explicit vector(int n);

  double& operator[](int i);
  double operator[](int i) const;
  int dim() const { return static_cast<int>(values.size()); }
  // Dot product with a vector of the same dimension.
  double operator*(const vector& other) const;

  double* data() { return values.data(); }
  const double* data() const { return values.data(); }

 private:
  std::vector<double> values;
};

}  // namespace tk
