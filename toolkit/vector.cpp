#include "toolkit/vector.h"

#include "toolkit/error.h"

namespace tk {

namespace {
double spare_entry;
}

vector::vector(int n) {
  if (n < 0) {
    error_handler(1, "vector: negative dimension.");
    return;
  }
  values.assign(static_cast<std::size_t>(n), 0.0);
}

double& vector::operator[](int i) {
  if (i < 0 || i >= dim()) {
    error_handler(1, "vector: index out of range ");
    return spare_entry;
  }
  return values[static_cast<std::size_t>(i)];
}

double vector::operator[](int i) const {
  if (i < 0 || i >= dim()) {
    error_handler(1, "vector: index out of range ");
    return 0.0;
  }
  return values[static_cast<std::size_t>(i)];
}

double vector::operator*(const vector& other) const {
  if (dim() != other.dim()) {
    error_handler(1, "vector arguments have different dimensions.");
    return 0.0;
  }
  double sum = 0.0;
  for (std::size_t i = 0; i < values.size(); ++i) sum += values[i] * other.values[i];
  return sum;
}

}  // namespace tk
