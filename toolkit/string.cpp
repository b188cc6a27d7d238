#include "toolkit/string.h"

#include <cstdio>
#include <cstring>

namespace tk {

std::string string::format_text(const char* format, ...) {
  va_list args;
  va_start(args, format);
  va_list copy;
  va_copy(copy, args);
  int size = std::vsnprintf(nullptr, 0, format, copy);
  va_end(copy);
  std::string result;
  if (size > 0) {
    result.resize(static_cast<size_t>(size) + 1);
    std::vsnprintf(&result[0], result.size(), format, args);
    result.resize(static_cast<size_t>(size));
  }
  va_end(args);
  return result;
}

string string::operator()(int i, int j) const {
  if (i < 0) i = 0;
  if (j > length() - 1) j = length() - 1;
  if (i > j) return string();
  return string(text.substr(static_cast<size_t>(i), static_cast<size_t>(j - i + 1)));
}

int string::pos(const string& s, int i) const {
  if (s.text.empty()) return -1;
  if (i < 0) i = 0;
  if (i > length()) return -1;
  std::string::size_type p = text.find(s.text, static_cast<size_t>(i));
  return p == std::string::npos ? -1 : static_cast<int>(p);
}

string string::del(int i, int j) const { return replace(i, j, string()); }

string string::replace(int i, int j, const string& s) const {
  return (*this)(0, i - 1) + s + (*this)(j + 1, length() - 1);
}

string string::replace_all(const string& s1, const string& s2) const {
  if (s1.text.empty()) return *this;
  std::string result;
  std::string::size_type start = 0;
  for (;;) {
    std::string::size_type p = text.find(s1.text, start);
    if (p == std::string::npos) break;
    result.append(text, start, p - start);
    result += s2.text;
    start = p + s1.text.size();
  }
  result.append(text, start, std::string::npos);
  return string(result);
}

std::istream& string::read(std::istream& in, char delimiter) {
  text.clear();
  std::getline(in, text, delimiter);
  return in;
}

std::istream& operator>>(std::istream& in, string& s) {
  std::string word;
  in >> word;
  s = string(word);
  return in;
}

std::ostream& operator<<(std::ostream& out, const string& s) { return out << s.str(); }

int compare(const string& a, const string& b) {
  int c = std::strcmp(a.cstring(), b.cstring());
  return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

}  // namespace tk
