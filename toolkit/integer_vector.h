// tk::integer_vector: n arbitrary-precision numbers, all 0 at first, index 0 to n - 1.
// Its violations bypass the error funnel: the text goes to standard output and the
// process ends abnormally.
#pragma once

#include <vector>

#include "toolkit/integer.h"

namespace tk {

class integer_vector {
 public:
  explicit integer_vector(int n = 0);
  integer& operator[](int i);
  const integer& operator[](int i) const;
  int dim() const { return static_cast<int>(values.size()); }

 private:
  std::vector<integer> values;
};

}  // namespace tk
