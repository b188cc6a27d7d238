#include "toolkit/integer_vector.h"

#include <cstdio>
#include <cstdlib>

namespace tk {

namespace {
[[noreturn]] void precondition_violation(const char* where) {
  std::printf("TOOLKIT PRECONDITION VIOLATION: %s\n", where);
  std::fflush(stdout);
  std::abort();
}
}  // namespace

integer_vector::integer_vector(int n) {
  if (n < 0) precondition_violation("integer_vector::constructor:   negative dimension.");
  values.assign(static_cast<size_t>(n), integer(0));
}

integer& integer_vector::operator[](int i) {
  if (i < 0 || i >= dim()) precondition_violation("integer_vector::operator[]:     index out of range.");
  return values[static_cast<size_t>(i)];
}

const integer& integer_vector::operator[](int i) const {
  if (i < 0 || i >= dim()) precondition_violation("integer_vector::operator[]:     index out of range.");
  return values[static_cast<size_t>(i)];
}

}  // namespace tk
