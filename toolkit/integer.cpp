#include "toolkit/integer.h"

namespace tk {

integer integer::power_of_two(int n) {
  mpz_class v;
  mpz_ui_pow_ui(v.get_mpz_t(), 2, static_cast<unsigned long>(n < 0 ? 0 : n));
  return integer(v);
}

}  // namespace tk
