// Trl_Imt2000Check: the strict line-by-line check of the two IMT-2000 ".ent" files, run
// before they are parsed so that the parser only ever sees lines of the expected shape.
// The rules are deliberately narrow: a number is digits with at most one point (no sign, no
// exponent; the empty text passes), and the last value of a list is not looked at.
#pragma once

#include <istream>
#include <string>

class Trl_Imt2000Check {
 public:
  // Digits and at most one ".", nothing else; "" passes.
  static bool number(const std::string& text);
  // keyword (ending in "{") then count values: count - 1 numbers each ended by ",", then
  // anything up to a "}" that ends the line.
  static bool list(const std::string& line, const std::string& keyword, int count);
  // keyword (ending in "=") then a number.
  static bool keyword_number(const std::string& line, const std::string& keyword);
  // "(" number "," number ")", with anything before "(" and after ")".
  static bool vertex(const std::string& line);

  // Whole files, read line by line; false at the first line out of shape or missing.
  static bool entrada(std::istream& in);
  static bool datos(std::istream& in);

  // The whole number a checked number stands for: its digits before any point, saturated.
  static int whole(const std::string& number);
};
