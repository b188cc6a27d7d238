#include "network/Trl_Imt2000Scanner.h"

#include <cctype>
#include <climits>
#include <cstdlib>

Trl_Imt2000Scanner::Trl_Imt2000Scanner(std::string text_) : text(std::move(text_)), at(0) {}

void Trl_Imt2000Scanner::space() {
  while (at < text.size() && std::isspace(static_cast<unsigned char>(text[at]))) ++at;
}

bool Trl_Imt2000Scanner::literal(const char* expected) {
  for (; *expected; ++expected, ++at)
    if (at >= text.size() || text[at] != *expected) return false;
  return true;
}

// strtod and strtol stop at the terminating zero of c_str(), and at a zero byte inside the
// text as well, so they never read past the buffer.
bool Trl_Imt2000Scanner::real(double& value) {
  space();
  const char* start = text.c_str() + at;
  char* end = nullptr;
  double v = std::strtod(start, &end);
  if (end == start) return false;
  at += static_cast<size_t>(end - start);
  value = v;
  return true;
}

bool Trl_Imt2000Scanner::whole(int& value) {
  space();
  const char* start = text.c_str() + at;
  char* end = nullptr;
  long v = std::strtol(start, &end, 10);
  if (end == start) return false;
  at += static_cast<size_t>(end - start);
  value = v > INT_MAX ? INT_MAX : (v < INT_MIN ? INT_MIN : static_cast<int>(v));
  return true;
}

bool Trl_Imt2000Scanner::word(std::string& value) {
  space();
  size_t start = at;
  while (at < text.size() && !std::isspace(static_cast<unsigned char>(text[at]))) ++at;
  if (at == start) return false;
  value = text.substr(start, at - start);
  return true;
}

template <class T>
bool Trl_Imt2000Scanner::read_list(const char* keyword, T* values, int count) {
  space();
  if (!literal(keyword)) return false;
  for (int k = 0; k < count; ++k)
    if ((k > 0 && !literal(",")) || !value(values[k])) return false;
  return literal("}");
}

bool Trl_Imt2000Scanner::list(const char* keyword, double* values, int count) {
  return read_list(keyword, values, count);
}

bool Trl_Imt2000Scanner::list(const char* keyword, int* values, int count) {
  return read_list(keyword, values, count);
}
