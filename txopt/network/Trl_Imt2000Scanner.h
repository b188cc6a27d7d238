// Trl_Imt2000Scanner: formatted reading of an ".ent" file with the rules of C's scanf on
// one stream: white space before a number or a word is skipped, literal text must match
// character by character, and a read that meets a mismatch stops there, leaving the position
// on the offending character for the next read. Numbers are converted as strtod and strtol
// do, a whole number beyond the int range is clamped, so no input leads to undefined
// behaviour.
#pragma once

#include <string>

class Trl_Imt2000Scanner {
 public:
  explicit Trl_Imt2000Scanner(std::string text);

  // Skips white space (a blank in a scanf pattern).
  void space();
  // Matches the text; the characters matched before a mismatch are used up.
  bool literal(const char* text);
  bool real(double& value);   // "%le"
  bool whole(int& value);     // "%d"
  bool word(std::string& value);  // "%s"

  // " keyword v0,v1,...}" read into count values, the way one scanf call with
  // "keyword%le,%le,...}" does: values before a mismatch are kept.
  bool list(const char* keyword, double* values, int count);
  bool list(const char* keyword, int* values, int count);

 private:
  template <class T>
  bool read_list(const char* keyword, T* values, int count);
  bool value(double& v) { return real(v); }
  bool value(int& v) { return whole(v); }

  std::string text;
  size_t at;
};
