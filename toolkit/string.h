// tk::string: a text value with the toolkit's substring clipping, search and stream
// reading rules. Comparison is byte-wise and case-sensitive, as strcmp.
#pragma once

#include <cstdarg>
#include <istream>
#include <ostream>
#include <string>

namespace tk {

class string {
 public:
  string() {}
  string(const char* s) : text(s ? s : "") {}
  string(char c) : text(1, c) {}
  string(const std::string& s) : text(s) {}
  // Formatted by printf rules; at least one argument follows the format.
  template <class A, class... Rest>
  string(const char* format, A first, Rest... rest) : text(format_text(format, first, rest...)) {}

  int length() const { return static_cast<int>(text.size()); }
  const char* cstring() const { return text.c_str(); }
  const std::string& str() const { return text; }
  char operator[](int i) const { return text[static_cast<size_t>(i)]; }
  char& operator[](int i) { return text[static_cast<size_t>(i)]; }

  string& operator+=(const string& s) {
    text += s.text;
    return *this;
  }
  friend string operator+(const string& a, const string& b) { return string(a.text + b.text); }

  // The substring from i to j, both included; j beyond the end is the last index, i below 0
  // is 0, and an empty range gives "".
  string operator()(int i, int j) const;
  // Position of the first occurrence of s at or after i; -1 if none or if s is empty.
  int pos(const string& s, int i = 0) const;
  string del(int i, int j) const;
  string replace(int i, int j, const string& s) const;
  string replace_all(const string& s1, const string& s2) const;

  // Reads up to the delimiter and removes it from the stream.
  std::istream& read(std::istream& in, char delimiter = '\n');

  friend bool operator==(const string& a, const string& b) { return a.text == b.text; }
  friend bool operator!=(const string& a, const string& b) { return a.text != b.text; }
  friend bool operator<(const string& a, const string& b) { return a.text < b.text; }
  friend bool operator>(const string& a, const string& b) { return a.text > b.text; }
  friend bool operator<=(const string& a, const string& b) { return a.text <= b.text; }
  friend bool operator>=(const string& a, const string& b) { return a.text >= b.text; }

 private:
  static std::string format_text(const char* format, ...);

  std::string text;
};

// Reads a word delimited by white space, skipping white space before it.
std::istream& operator>>(std::istream& in, string& s);
std::ostream& operator<<(std::ostream& out, const string& s);

// Three-way comparison for the toolkit's sort functions.
int compare(const string& a, const string& b);

}  // namespace tk
