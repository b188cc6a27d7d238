// tk::integer: an arbitrary-precision signed whole number (GMP underneath), for counts
// that outgrow 64 bits, such as the number of subsets of a large set.
#pragma once

#include <gmpxx.h>

#include <ostream>
#include <string>

namespace tk {

class integer {
 public:
  integer() : value(0) {}
  integer(int v) : value(v) {}
  integer(long v) : value(v) {}

  integer& operator+=(const integer& o) {
    value += o.value;
    return *this;
  }
  friend integer operator+(const integer& a, const integer& b) { return integer(mpz_class(a.value + b.value)); }
  friend integer operator-(const integer& a, const integer& b) { return integer(mpz_class(a.value - b.value)); }
  friend integer operator*(const integer& a, const integer& b) { return integer(mpz_class(a.value * b.value)); }
  friend bool operator==(const integer& a, const integer& b) { return a.value == b.value; }
  friend bool operator!=(const integer& a, const integer& b) { return a.value != b.value; }
  friend bool operator<(const integer& a, const integer& b) { return a.value < b.value; }
  friend bool operator<=(const integer& a, const integer& b) { return a.value <= b.value; }
  friend bool operator>(const integer& a, const integer& b) { return a.value > b.value; }
  friend bool operator>=(const integer& a, const integer& b) { return a.value >= b.value; }

  // 2 to the power n.
  static integer power_of_two(int n);
  std::string to_string() const { return value.get_str(); }
  double to_double() const { return value.get_d(); }
  friend std::ostream& operator<<(std::ostream& out, const integer& v) { return out << v.value.get_str(); }

 private:
  explicit integer(const mpz_class& v) : value(v) {}
  mpz_class value;
};

}  // namespace tk
