// Trl_Legend: maps a value to a class and a class to a toolkit colour. A regular legend of
// count steps from `lowest` with a step has classes 0 (below lowest), 1..count-1, and
// `last` = count + 1 for every value from `highest` up; an irregular one takes the first
// class whose upper bound exceeds the value.
#pragma once

#include "toolkit/array.h"
#include "toolkit/string.h"

class Trl_Legend_item {
 public:
  Trl_Legend_item() : value(0), colour(0) {}
  Trl_Legend_item(double value, int colour);
  virtual ~Trl_Legend_item() {}

  double value;  // upper bound of the class
  int colour;    // toolkit colour number
  tk::string label;
};

class Trl_Legend {
 public:
  Trl_Legend(bool irregular, int count, double lowest, double step);
  virtual ~Trl_Legend() {}

  int index_of(double v) const;
  int colour_of(double v) const { return items[index_of(v)].colour; }

  tk::string title, unit;  // not used
  int style = 1;
  double box[11] = {0.1, 0.05, 0, 0.2, 0.4, 0.2, 0.875, 0.8, 0, 0, 0};
  bool irregular;
  double lowest;
  double highest;
  double scale;
  int last;
  tk::array<Trl_Legend_item> items;
};
